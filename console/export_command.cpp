// The command that exports an image to a layout.
#include <algorithm>
#include <optional>

#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/option_set.h"
#include "files/native_file.h"
#include "files/path.h"
#include "files/refused.h"
#include "image/conversion.h"
#include "iml/export/export.h"
#include "iml/layout/layout_names.h"

namespace vantrel {

namespace {

constexpr const char* kNotes =
    "Examples:\n"
    "  vantrel iso2iml game.iso\n"
    "  vantrel iso2iml game.iso -o /layouts/game.iml --path /games/game/\n"
    "  vantrel iso2iml game.iso -o work/game.iml --extract\n"
    "\n"
    "Writes game.iml, the layout, and game.ims, the image's leading structures. With --extract also every file that "
    "the layout lists, and game.gaps with the rest of the image; \"vantrel iml2iso\" can then rebuild the image. With "
    "several images, the files of each are in a folder of its name.";

std::string WithBackslash(const std::string& folder) {
    return folder + '\\';
}

/// The word behind --extract is always its folder, even if FILE was meant.
std::string FolderProblem(const std::string& folder) {
    return FileKindOf(folder) == EFileKind::File
               ? folder + " is a file; give FILE before --extract, or write --extract=FOLDER"
               : std::string();
}

class CExportCommand : public CConversionCommand {
public:
    CExportCommand()
        : CConversionCommand({"iso2iml", "Export an image to a layout, from which it can be rebuilt", kNotes}) {}

    void Declare(COptionSet& options) override {
        CConversionCommand::Declare(options);
        options.AddText("--path", m_path,
                        "Folder that the layout puts before every path, without its drive (otherwise paths are "
                        "relative)");
        options.AddOptionalText("--extract", m_extract,
                                "Also write the listed files below this folder (by default that of --path, or else "
                                "the layout's)",
                                FolderProblem);
        options.AddFlag("--no-dates", m_noDates,
                        "Give the extracted files the current date instead of the recorded one");
    }

    std::string OutputName(const std::string& inputName) const override { return WithExtension(inputName, ".iml"); }

    std::vector<std::string> Companions(const std::string& output) const override {
        std::vector<std::string> companions = {LeadingPathOf(output)};
        if (m_extract) {
            companions.push_back(GapPathOf(output));
        }
        return companions;
    }

    std::string UsageProblem() const override {
        std::string problem = CConversionCommand::UsageProblem();
        if (!problem.empty() || !m_extract) {
            return problem;
        }
        if (m_extract->empty() && kPathSeparator != '\\' && m_path.find('\\') != std::string::npos) {
            return "--extract: needs a folder, because that of --path is one of another system";
        }
        return ClashingNames();
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        RefuseStaleGaps(job);
        const std::unique_ptr<CImageSource> image =
            OpenContainer(ResolveFileCase(job.input), "Code 101e - Error Opening %s", operation);
        SExportRequest request;
        request.imagePath = job.input;
        request.image = image.get();
        request.layoutPath = job.output;
        request.folderText = FolderText(job.input);
        request.manner = job.manner;
        if (m_extract) {
            request.extractionFolder = ExtractionFolder(job);
            RefuseUsedFolder(job, *request.extractionFolder);
            request.keepDates = !m_noDates;
            request.existsHint = "; -f replaces it";
        }
        ExportImage(request, operation);
        if (image) {
            WarnOfOtherParts(*image, job.input, operation);
        }
    }

private:
    /// With several images, each has a folder of its own.
    bool HasImageFolders() const { return m_extract && Files().size() > 1; }

    /// The name of an image's own folder.
    static std::string ImageFolder(const std::string& image) { return WithExtension(FileNameOf(image), ""); }

    std::string ClashingNames() const {
        std::vector<std::string> names;
        for (const std::string& image : Files()) {
            const std::string name = ImageFolder(image);
            const auto isSame = [&name](const std::string& other) { return EqualIgnoringCase(name, other); };
            if (std::any_of(names.begin(), names.end(), isSame)) {
                return "--extract: two images have the name " + name + "; export them one by one";
            }
            names.push_back(name);
        }
        return {};
    }

    /// A later rebuild would take the rest of the image from there.
    void RefuseStaleGaps(const SConversionJob& job) const {
        const std::string gaps = GapPathOf(job.output);
        if (!m_extract && FileKindOf(gaps) != EFileKind::Missing) {
            throw CRefused(gaps +
                           " of an earlier export would not belong to the new layout; use --extract again, "
                           "or delete it");
        }
    }

    /// A folder that was named for the files and holds others.
    void RefuseUsedFolder(const SConversionJob& job, const std::string& folder) const {
        if (!m_extract->empty() && !Replaces(job.manner) && !ListFolder(folder).empty()) {
            throw CRefused(folder + " exists already; -f adds the files to it and replaces those that exist");
        }
    }

    /// --path with a closing separator of its own kind; with image folders, also the image's own one if the files are
    /// written where the layout says that they are.
    std::string FolderText(const std::string& image) const {
        std::string folder = m_path;
        if (!folder.empty() && folder.find_last_of("\\/") != folder.size() - 1) {
            folder = folder.find('\\') == std::string::npos ? folder + kPathSeparator : WithBackslash(folder);
        }
        return HasImageFolders() && m_extract->empty() ? WithBackslash(folder + ImageFolder(image)) : folder;
    }

    /// By default files are written where the layout says that they are.
    std::string ExtractionFolder(const SConversionJob& job) const {
        const std::string parent = !m_extract->empty() ? *m_extract : m_path.empty() ? FolderOf(job.output) : m_path;
        return WithSeparator(parent) + (HasImageFolders() ? WithSeparator(ImageFolder(job.input)) : std::string());
    }

    std::string m_path;
    std::optional<std::string> m_extract;
    bool m_noDates = false;
};

}  // namespace

void AddExportCommand(Commands& commands) {
    commands.push_back(std::make_unique<CExportCommand>());
}

}  // namespace vantrel
