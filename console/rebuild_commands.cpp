// Commands of the rebuild: an image from its layout, and the postgap of an image.
#include <memory>

#include "console/commands.h"
#include "files/path.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_summary.h"
#include "iso/postgap.h"
#include "iml/rebuild/rebuild.h"

namespace vantrel {

namespace {

constexpr const char* kRebuildExamples =
    "Examples:\n"
    "  vantrel iml2iso game.iml\n"
    "  vantrel iml2iso --files /discs/game/files -o /discs/new.iso game.iml\n"
    "  vantrel iml2iso --exact game.iml\n"
    "\n"
    "The leading structures are read from the layout's .ims file. Relative paths of the layout begin in its own "
    "folder\n"
    "or in that of --files; a backslash separates folders, and names are matched exactly first and then without "
    "regard\n"
    "to case.\n"
    "\n"
    "--exact puts every file at the sector that the layout records, fills the rest of its last sector with zeros and\n"
    "leaves the volume size alone. Its purpose: files that were extracted and not changed give back the original "
    "image,\n"
    "bit for bit. A file that has outgrown its place is refused.";

struct SRebuildOptions {
    std::string filesFolder;
    bool exact = false;
};

void Rebuild(const SConversionJob& job, const SRebuildOptions& options, COperation& operation) {
    SRebuildRequest request;
    request.layoutPath = job.input;
    request.leadingPath = FindLeadingStructures(job.input);
    request.outputPath = job.output;
    request.manner = job.manner;
    const std::string ownFolder = FolderOf(job.input);
    request.filesFolder = WithSeparator(!options.filesFolder.empty() ? options.filesFolder
                                        : !ownFolder.empty()         ? ownFolder
                                                                     : ".");
    request.exact = options.exact;
    request.gapsPath = ResolveFileCase(GapPathOf(job.input));
    Vantrel(request, operation);
}

SConversionCommand RebuildCommand() {
    const auto options = std::make_shared<SRebuildOptions>();
    SConversionCommand command;
    command.name = "iml2iso";
    command.summary = "Rebuild an image from its layout and the files that it lists";
    command.examples = kRebuildExamples;
    command.outputName = [](const std::string& fileName) { return BaseNameOf(fileName) + ".iso"; };
    command.addOptions = [options](CLI::App& app) {
        app.add_option("--files", options->filesFolder, "Folder in which the layout's relative paths begin");
        app.add_flag("--exact", options->exact, "Give back the original image from unchanged files");
    };
    command.run = [options](const SConversionJob& job, COperation& operation) { Rebuild(job, *options, operation); };
    return command;
}

SConversionCommand CheckCommand() {
    const auto dryRun = std::make_shared<bool>(false);
    SConversionCommand command;
    command.name = "check-postgap";
    command.summary = "Tell whether a PlayStation 2 CD image has its postgap, and append it where it is missing";
    command.examples =
        "Examples:\n  vantrel check-postgap game.iso\n  vantrel check-postgap --dry-run game.iso\n\n"
        "The image is changed where it stands; a change that cannot be completed is undone.";
    command.addOptions = [dryRun](CLI::App& app) { app.add_flag("--dry-run", *dryRun, "Tell only, change nothing"); };
    command.run = [dryRun](const SConversionJob& job, COperation& operation) {
        CheckPostgap({job.input, *dryRun ? EUpdateManner::ReadOnly : EUpdateManner::UndoUnlessCommitted}, operation);
    };
    return command;
}

SConversionCommand AddCommand() {
    SConversionCommand command;
    command.name = "add-postgap";
    command.summary =
        "Append zero sectors to a UMD image; make the volume size of a UMD or CD image that of its length";
    command.examples =
        "Examples:\n  vantrel add-postgap --count 2 game.iso\n\n"
        "The image is changed where it stands; a change that cannot be completed is undone. A CD image is not\n"
        "lengthened: only its volume size is corrected.";
    command.takesLevel = true;
    command.levelOption = "--count";
    command.levelSummary = "Number of sectors, 1 to 9";
    command.levelRequired = true;
    command.run = [](const SConversionJob& job, COperation& operation) {
        AddSelectivePostgap({job.input, EUpdateManner::UndoUnlessCommitted}, operation);
    };
    return command;
}

}  // namespace

void AddRebuildCommands(CLI::App& app, ChosenCommand& chosen) {
    AddConversionCommand(app, chosen, RebuildCommand());
    AddConversionCommand(app, chosen, CheckCommand());
    AddConversionCommand(app, chosen, AddCommand());
}

}  // namespace vantrel
