// The command that extracts files from an image of any form.
#include <algorithm>
#include <cstdio>

#include "console/commands.h"
#include "console/console_operation.h"
#include "console/option_set.h"
#include "files/letter_case.h"
#include "files/path.h"
#include "files/refused.h"
#include "image/image_source.h"
#include "iso/contents.h"
#include "iso/extraction.h"
#include "iso/iso9660.h"

namespace vantrel {

namespace {

/// Whether `path` is `wanted` or lies in the folder of that name. Ignores case, because the names on a disc are usually
/// in upper case.
bool IsOrLiesIn(const std::string& path, const std::string& wanted) {
    return path.size() >= wanted.size() &&
           std::equal(wanted.begin(), wanted.end(), path.begin(),
                      [](char a, char b) { return LowerAscii(a) == LowerAscii(b); }) &&
           (path.size() == wanted.size() || path[wanted.size()] == '/');
}

/// A path as typed, in the form of the image's paths: "/DIR\SUB/" becomes "DIR/SUB".
std::string Normalized(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    path.erase(0, path.find_first_not_of('/'));
    path.erase(path.find_last_not_of('/') + 1);
    return path;
}

SExtractedFile ExtractedFile(const SContentFile& file) {
    std::string path = file.path;
    std::replace(path.begin(), path.end(), '/', '\\');
    return {file.extents, std::move(path)};
}

class CExtractCommand : public CCommand {
public:
    CExtractCommand()
        : CCommand({"extract", "Extract files from an image",
                    "PATH names a file or a folder of the image, in upper or lower case. A failed extraction leaves "
                    "nothing behind.\n"
                    "Examples:\n  vantrel extract game.cso -C game\n"
                    "  vantrel extract game.iso SYSTEM.CNF PSP_GAME/SYSDIR"}) {}

    void Declare(COptionSet& options) override {
        options.AddText("FILE", m_file, "The image: ISO, CSO, DAX, BIN or CUE sheet");
        options.Require("FILE");
        options.AddTexts("PATH", m_paths, "Files and folders to extract; by default all");
        options.AddText("-C,--directory", m_folder, "Write below this folder instead of the current one");
        options.AddFlag("-f,--force", m_force, "Replace existing files");
        options.AddFlag("-q,--quiet", m_quiet, "Print errors only");
    }

    EExit Run() override {
        try {
            const std::size_t count = Extract();
            if (!m_quiet) {
                std::printf("%s: %zu files extracted\n", m_file.c_str(), count);
            }
            return EExit::Done;
        } catch (const std::runtime_error& failure) {
            std::fprintf(stderr, "vantrel extract: %s\n", failure.what());
            return EExit::Failed;
        }
    }

private:
    /// Returns the number of files.
    std::size_t Extract() const {
        const std::unique_ptr<CImageSource> image = OpenImage(m_file);
        const SContents contents = ReadContents(*image);
        RefuseDamaged(*image, m_file);
        std::vector<SExtractedFile> files = Choose(contents.files);
        const std::size_t count = files.size();
        SExtractionRequest request;
        request.imagePath = m_file;
        request.folder = WithSeparator(m_folder);
        request.manner = m_force ? EOutputManner::CommitReplace : EOutputManner::CommitNew;
        request.existsHint = "; -f replaces it";
        CProgressLine progress(!m_quiet && IsTerminal(), FileNameOf(m_file), image->Size());
        CConsoleOperation operation(progress);
        CExtraction extraction(request, *image, std::move(files), operation);
        extraction.Check();
        extraction.Write();
        extraction.Keep();
        return count;
    }

    /// The files that the paths name, or all if there are no paths. Every path must name something.
    std::vector<SExtractedFile> Choose(const std::vector<SContentFile>& files) const {
        std::vector<bool> isChosen(files.size(), m_paths.empty());
        for (const std::string& path : m_paths) {
            const std::string wanted = Normalized(path);
            bool found = false;
            for (std::size_t i = 0; i < files.size(); ++i) {
                if (IsOrLiesIn(files[i].path, wanted)) {
                    isChosen[i] = true;
                    found = true;
                }
            }
            if (!found) {
                throw CRefused(m_file + ": holds no " + path);
            }
        }
        std::vector<SExtractedFile> chosen;
        for (std::size_t i = 0; i < files.size(); ++i) {
            if (isChosen[i]) {
                chosen.push_back(ExtractedFile(files[i]));
            }
        }
        return chosen;
    }

    std::string m_file;
    std::vector<std::string> m_paths;
    std::string m_folder;
    bool m_force = false;
    bool m_quiet = false;
};

}  // namespace

void AddExtractCommand(Commands& commands) {
    commands.push_back(std::make_unique<CExtractCommand>());
}

}  // namespace vantrel
