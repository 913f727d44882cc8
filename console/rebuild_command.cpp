// The command that rebuilds an image from its layout.
#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/option_set.h"
#include "files/path.h"
#include "iml/layout/layout_names.h"
#include "iml/layout/layout_summary.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel {

namespace {

constexpr const char* kNotes =
    "Examples:\n"
    "  vantrel iml2iso game.iml\n"
    "  vantrel iml2iso --files /discs/game/files -o /discs/new.iso game.iml\n"
    "  vantrel iml2iso --exact game.iml\n"
    "\n"
    "The leading structures are read from the layout's .ims file. Relative paths of the layout start in its own "
    "folder or in that of --files. Backslashes separate folders. Names match exactly or, failing that, in another "
    "case.\n"
    "\n"
    "--exact puts every file at the sector that the layout records, fills the rest of its last sector with zeros and "
    "leaves the volume size unchanged. Files that were extracted and not changed give the original image, bit for "
    "bit. A file that no longer fits its sectors is refused.";

class CRebuildCommand : public CConversionCommand {
public:
    CRebuildCommand()
        : CConversionCommand({"iml2iso", "Rebuild an image from its layout and the files that it lists", kNotes}) {}

    void Declare(COptionSet& options) override {
        CConversionCommand::Declare(options);
        options.AddText("--files", m_filesFolder, "Folder in which the layout's relative paths start");
        options.AddFlag("--exact", m_exact, "Restore the original image from unchanged files");
    }

    std::string OutputName(const std::string& inputName) const override { return WithExtension(inputName, ".iso"); }

    std::vector<std::string> FurtherInputs(const std::string& input) const override {
        return {FindLeadingStructures(input), GapsOf(input)};
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        SRebuildRequest request;
        request.layoutPath = job.input;
        request.leadingPath = FindLeadingStructures(job.input);
        request.outputPath = job.output;
        request.manner = job.manner;
        request.strict = true;
        request.filesFolder = FilesFolder(job.input);
        request.exact = m_exact;
        request.gapsPath = GapsOf(job.input);
        RebuildImage(request, operation);
    }

private:
    static std::string GapsOf(const std::string& layout) { return ResolveFileCase(GapPathOf(layout)); }

    std::string FilesFolder(const std::string& layout) const {
        if (!m_filesFolder.empty()) {
            return WithSeparator(m_filesFolder);
        }
        const std::string own = FolderOf(layout);
        return own.empty() ? WithSeparator(".") : own;
    }

    std::string m_filesFolder;
    bool m_exact = false;
};

}  // namespace

void AddRebuildCommand(Commands& commands) {
    commands.push_back(std::make_unique<CRebuildCommand>());
}

}  // namespace vantrel
