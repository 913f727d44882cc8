// The command that rebuilds an image from its layout.
#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/edit_result.h"
#include "console/messages.h"
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
    "The image is the exported one with the files as they are now. A changed file stays at its sector if it fits there "
    "or if the sectors behind it are free. Otherwise it moves behind everything else; no other file moves. "
    "Directories, "
    "UDF and the sizes of the volumes are corrected. Files cannot be added, renamed or removed; an empty file in the "
    "place of a file empties it.\n"
    "\n"
    "--exact restores the exported image, bit for bit, and refuses changed files. --like-window places the files one "
    "behind the other, as the window does, and corrects no directory.";

class CRebuildCommand : public CConversionCommand {
public:
    CRebuildCommand()
        : CConversionCommand({"iml2iso", "Rebuild an image from its layout and the files that it lists", kNotes}) {}

    void Declare(COptionSet& options) override {
        CConversionCommand::Declare(options);
        options.AddText("--files", m_filesFolder, "Folder in which the layout's relative paths start");
        options.AddFlag("--keep-places", m_keepPlaces, "Refuse changes for which a file would have to move");
        options.AddFlag("--exact", m_exact, "Restore the exported image; refuse any change");
        options.AddFlag("--like-window", m_likeWindow,
                        "Rebuild as the window does; status 0 does not mean that readers "
                        "find changed files");
        for (const char* const option : {"--exact", "--keep-places"}) {
            options.Exclude("--like-window", option);
        }
        DeclareReport(options);
        for (const char* const option : {"--dry-run", "--json"}) {
            options.Exclude("--like-window", option);
        }
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
        request.rule = m_exact ? ERebuildRule::Exact : m_likeWindow ? ERebuildRule::LikeWindow : ERebuildRule::Edited;
        request.gapsPath = GapsOf(job.input);
        request.editRules.keepPlaces = m_keepPlaces;
        request.dryRun = IsDryRun();
        const SEditReport report = RebuildImage(request, operation);
        if (ReportsJson()) {
            PrintResults(EditJson(job.input, IsDryRun() ? "" : job.output, report));
        }
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
    bool m_likeWindow = false;
    bool m_keepPlaces = false;
};

}  // namespace

void AddRebuildCommand(Commands& commands) {
    commands.push_back(std::make_unique<CRebuildCommand>());
}

}  // namespace vantrel
