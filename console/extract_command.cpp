// The command that extracts files from an image of any form.
#include <algorithm>
#include <cstdint>
#include <span>
#include <sstream>

#include "console/command_input.h"
#include "console/commands.h"
#include "console/console_operation.h"
#include "console/conversion_command.h"
#include "console/file_patterns.h"
#include "console/interrupt.h"
#include "console/messages.h"
#include "console/option_set.h"
#include "files/path.h"
#include "files/refused.h"
#include "image/image_source.h"
#include "image/inspect/file_report.h"
#include "iso/extraction.h"
#include "iso/iso9660.h"

namespace vantrel {

namespace {

constexpr std::size_t kPieceSize = 1U << 20U;

std::vector<std::string> NamesIn(const std::string& path) {
    std::vector<std::string> names;
    std::istringstream stream(path);
    for (std::string name; std::getline(stream, name, '/');) {
        if (!name.empty() && name != ".") {
            names.push_back(name);
        }
    }
    return names;
}

/// A path as typed, in the form of the image's paths: "./DIR\\SUB\\A.TXT;1" becomes DIR, SUB and A.TXT.
std::vector<std::string> WantedNames(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return NamesIn(path.substr(0, path.find(kVersionSeparator)));
}

/// Whether `path` fits the wanted names or lies in a folder that does. Ignores case, because the names on a disc are
/// usually in upper case.
bool IsOrLiesIn(const std::string& path, const std::vector<std::string>& wanted) {
    const std::vector<std::string> names = NamesIn(path);
    return names.size() >= wanted.size() && std::equal(wanted.begin(), wanted.end(), names.begin(),
                                                       [](const std::string& pattern, const std::string& name) {
                                                           return MatchesPattern(name, pattern);
                                                       });
}

SExtractedFile ExtractedFile(const SContentFile& file, bool hasDate) {
    std::string path = file.path;
    std::replace(path.begin(), path.end(), '/', '\\');
    return {file.extents, std::move(path), hasDate ? file.date : std::nullopt};
}

class CExtractCommand : public CCommand {
public:
    CExtractCommand()
        : CCommand({"extract", "Extract files from an image",
                    "PATH names a file or a folder of the image, in upper or lower case; * and ? stand "
                    "for any characters and for one. A failed extraction leaves nothing behind. Of a CUE sheet, the "
                    "first data track is read; if there are others, they are named and the exit status is 1.\n"
                    "Examples:\n  vantrel extract game.cso -C game\n"
                    "  vantrel extract game.iso SYSTEM.CNF PSP_GAME/SYSDIR\n"
                    "  vantrel extract game.iso --stdout SYSTEM.CNF"}) {}

    void Declare(COptionSet& options) override {
        options.AddText("FILE", m_file, "The image: ISO, CSO, ZSO, DAX, BIN or CUE sheet");
        options.Require("FILE");
        options.AddTexts("PATH", m_paths, "Files and folders to extract; by default all");
        options.AddText("-C,--directory", m_folder, "Write below this folder instead of the current one");
        options.AddFlag("-f,--force", m_force, "Replace existing files");
        options.AddFlag("--sync", m_sync, "Write new files to the disk before the end, as replaced ones always are");
        options.AddFlag("--stdout", m_toOutput, "Write one file to standard output instead");
        options.Exclude("--stdout", "--directory");
        options.AddFlag("--no-dates", m_noDates, "Give the files the current date instead of the recorded one");
        options.AddFlag("-q,--quiet", m_quiet, "Print errors only");
    }

    EExit Run() override {
        try {
            if (m_toOutput) {
                WriteToOutput();
                return EExit::Done;
            }
            const SCommandInput input = InputOf(m_file);
            const std::size_t count = Extract(input);
            if (!m_quiet) {
                const char* const noun = count == 1 ? " file" : " files";
                PrintResults(Shown(m_file, EStream::Output) + ": " + std::to_string(count) + noun + " extracted\n");
            }
            for (const std::string& text : input.unread) {
                PrintError(Name(), m_file, text);
            }
            return input.unread.empty() ? EExit::Done : EExit::Failed;
        } catch (const CConversionFailed& failure) {
            PrintError(Name(), m_file, FailureText(failure));
        } catch (const CRefused& refusal) {
            PrintError(Name(), m_file, refusal.what());
        }
        return EExit::Failed;
    }

private:
    /// Returns the number of files.
    std::size_t Extract(const SCommandInput& input) const {
        const std::unique_ptr<CImageSource> image = OpenImage(m_file);
        std::vector<SExtractedFile> files = Choose(ContentsOf(*image, m_file).files);
        const std::size_t count = files.size();
        SExtractionRequest request;
        request.imagePath = m_file;
        request.inputs = input.files;
        request.folder = WithSeparator(m_folder);
        request.manner = MannerOf(m_force, m_sync);
        request.existsHint = "; -f replaces it";
        CProgressLine progress(!m_quiet && CanDrawProgress(), FileNameOf(m_file), image->Size());
        CConsoleOperation operation(progress);
        try {
            CExtraction extraction(request, *image, std::move(files), operation);
            extraction.Check();
            extraction.Write();
            extraction.Commit();
        } catch (const CConversionFailed& failure) {
            ThrowWithDamage(failure, *image);
        }
        return count;
    }

    /// Adds the cause if a damaged block ended a read.
    [[noreturn]] static void ThrowWithDamage(const CConversionFailed& failure, const CImageSource& image) {
        const bool isKnown = image.Fault().empty() || !failure.Cause().empty();
        throw CConversionFailed(
            failure.what(),
            isKnown ? failure.Cause() : std::string("damaged ") + image.BlockNoun() + ": " + image.Fault());
    }

    /// Writes the one chosen file to stdout.
    void WriteToOutput() const {
        const std::unique_ptr<CImageSource> image = OpenImage(m_file);
        const std::vector<SExtractedFile> files = Choose(ContentsOf(*image, m_file).files);
        if (files.size() != 1) {
            throw CRefused(m_file + ": " + std::to_string(files.size()) + " files were chosen; --stdout writes one");
        }
        UseBinaryOutput();
        std::vector<std::uint8_t> buffer(kPieceSize);
        for (const SExtent& extent : files.front().extents) {
            for (std::int64_t done = 0; done < extent.size;) {
                ThrowIfInterrupted();
                const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(extent.size - done, kPieceSize));
                if (image->ReadAt(extent.Position() + done, std::span(buffer).first(wanted)) != wanted) {
                    RefuseDamaged(*image, m_file);
                    throw CRefused(m_file + ": the image ends within " + files.front().path);
                }
                PrintResults({buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(wanted)});
                done += static_cast<std::int64_t>(wanted);
            }
        }
    }

    /// The files that the paths name, or all if there are no paths. Every path must name something.
    std::vector<SExtractedFile> Choose(const std::vector<SContentFile>& files) const {
        std::vector<bool> isChosen(files.size(), m_paths.empty());
        for (const std::string& path : m_paths) {
            const std::vector<std::string> wanted = WantedNames(path);
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
                chosen.push_back(ExtractedFile(files[i], !m_noDates));
            }
        }
        return chosen;
    }

    std::string m_file;
    std::vector<std::string> m_paths;
    std::string m_folder;
    bool m_force = false;
    bool m_sync = false;
    bool m_quiet = false;
    bool m_toOutput = false;
    bool m_noDates = false;
};

}  // namespace

void AddExtractCommand(Commands& commands) {
    commands.push_back(std::make_unique<CExtractCommand>());
}

}  // namespace vantrel
