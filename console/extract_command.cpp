// The command that takes files out of an image of any form.
#include <algorithm>
#include <cstdio>
#include <memory>

#include "console/commands.h"
#include "console/console_operation.h"
#include "console/open_image.h"
#include "console/refused.h"
#include "iso/extraction.h"
#include "files/path.h"
#include "iso/contents.h"
#include "iso/iso9660.h"
#include "files/letter_case.h"

namespace vantrel {

namespace {

struct SOptions {
    std::string file;
    std::vector<std::string> paths;
    std::string folder;
    bool force = false;
    bool quiet = false;
};

/// Whether `path` is `wanted` or lies in the folder of that name. Discs have their names in one case, so cases do not
/// count.
bool IsOrLiesIn(const std::string& path, const std::string& wanted) {
    return path.size() >= wanted.size() &&
           std::equal(wanted.begin(), wanted.end(), path.begin(),
                      [](char a, char b) { return LowerAscii(a) == LowerAscii(b); }) &&
           (path.size() == wanted.size() || path[wanted.size()] == '/');
}

/// "/DIR\SUB/" as it was typed becomes "DIR/SUB".
std::string Normalized(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    path.erase(0, path.find_first_not_of('/'));
    path.erase(path.find_last_not_of('/') + 1);
    return path;
}

/// The files that the paths name, all when there are none. Every path must name something.
std::vector<SExtractedFile> Choose(const SContents& contents, const SOptions& options) {
    std::vector<bool> chosen(contents.files.size(), options.paths.empty());
    for (const std::string& path : options.paths) {
        bool found = false;
        for (std::size_t i = 0; i < contents.files.size(); ++i) {
            if (IsOrLiesIn(contents.files[i].path, Normalized(path))) {
                chosen[i] = true;
                found = true;
            }
        }
        if (!found) {
            throw CRefused(options.file + ": holds no " + path);
        }
    }
    std::vector<SExtractedFile> files;
    for (std::size_t i = 0; i < contents.files.size(); ++i) {
        if (chosen[i]) {
            const SContentFile& file = contents.files[i];
            std::string path = file.path;
            std::replace(path.begin(), path.end(), '/', '\\');
            files.push_back({file.sector * kSectorSize, file.size, std::move(path)});
        }
    }
    return files;
}

int Extract(const SOptions& options) {
    try {
        const std::unique_ptr<CImageSource> image = OpenImageOrRefuse(options.file);
        const SContents contents = ReadContents(*image);
        RefuseDamaged(*image, options.file);
        std::vector<SExtractedFile> files = Choose(contents, options);
        SExtractionRequest request;
        request.imagePath = options.file;
        request.folder = WithSeparator(options.folder);
        request.manner = options.force ? EOutputManner::CommitReplace : EOutputManner::CommitNew;
        CProgressLine progress(!options.quiet && IsTerminal(), FileNameOf(options.file), image->Size());
        CConsoleOperation operation({}, progress);
        const std::size_t count = files.size();
        CExtraction extraction(request, *image, std::move(files), operation);
        extraction.Check();
        extraction.Write();
        extraction.Keep();
        progress.Clear();
        if (!options.quiet) {
            std::printf("%s: %zu files extracted\n", options.file.c_str(), count);
        }
        return static_cast<int>(EExit::Done);
    } catch (const std::runtime_error& refusal) {
        std::fprintf(stderr, "vantrel extract: %s\n", refusal.what());
        return static_cast<int>(EExit::Failed);
    }
}

}  // namespace

void AddExtractCommand(CLI::App& app, ChosenCommand& chosen) {
    CLI::App* command = app.add_subcommand("extract", "Take files out of an image");
    command->footer(
        "PATH names a file or a folder of the image; upper and lower case count as the same. Nothing is left of an\n"
        "extraction that fails.\n"
        "Examples:\n  vantrel extract game.cso -C game\n  vantrel extract game.iso SYSTEM.CNF PSP_GAME/SYSDIR");
    const auto options = std::make_shared<SOptions>();
    command->add_option("FILE", options->file, "The image: ISO, CSO, DAX or BIN")->required();
    command->add_option("PATH", options->paths, "Files and folders to take; all when none is named");
    command->add_option("-C,--directory", options->folder, "Write below this folder instead of the current one");
    command->add_flag("-f,--force", options->force, "Replace existing files");
    command->add_flag("-q,--quiet", options->quiet, "Say nothing but errors");
    command->callback([&chosen, options] { chosen = [options] { return Extract(*options); }; });
}

}  // namespace vantrel
