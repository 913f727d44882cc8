// The command that exports an image to a layout.
#include <optional>

#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/option_set.h"
#include "files/native_file.h"
#include "files/path.h"
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
    "Writes game.iml, the layout, and game.ims, the image's leading structures. With\n"
    "--extract also every file that the layout lists, and game.gaps with the rest of the\n"
    "image; \"vantrel iml2iso\" can then rebuild the image.";

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
    }

    std::string OutputName(const std::string& inputName) const override { return BaseNameOf(inputName) + ".iml"; }

    std::vector<std::string> Companions(const std::string& output) const override {
        std::vector<std::string> companions = {LeadingPathOf(output)};
        if (m_extract) {
            companions.push_back(GapPathOf(output));
        }
        return companions;
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        SExportRequest request;
        request.imagePath = job.input;
        request.layoutPath = job.output;
        request.folderText = FolderText();
        request.manner = job.manner;
        if (m_extract) {
            request.extractionFolder = ExtractionFolder(job.output);
            request.existsHint = "; -f replaces it";
        }
        ExportImage(request, operation);
    }

private:
    /// --path with a closing separator.
    std::string FolderText() const {
        return m_path.empty() || m_path.find_last_of("\\/") == m_path.size() - 1 ? m_path : m_path + kPathSeparator;
    }

    /// By default files are written where the layout says that they are.
    std::string ExtractionFolder(const std::string& layout) const {
        if (!m_extract->empty()) {
            return WithSeparator(*m_extract);
        }
        return m_path.empty() ? FolderOf(layout) : WithSeparator(m_path);
    }

    std::string m_path;
    std::optional<std::string> m_extract;
};

}  // namespace

void AddExportCommand(Commands& commands) {
    commands.push_back(std::make_unique<CExportCommand>());
}

}  // namespace vantrel
