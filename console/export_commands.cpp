// The command that exports an image to a layout.
#include <memory>

#include "console/commands.h"
#include "files/native_file.h"
#include "files/path.h"
#include "iml/export/export.h"
#include "iml/layout/gap_file.h"
#include "iml/export/layout_writer.h"

namespace vantrel {

namespace {

constexpr const char* kExamples =
    "Examples:\n"
    "  vantrel iso2iml game.iso\n"
    "  vantrel iso2iml game.iso -o /layouts/game.iml --path /games/game/\n"
    "  vantrel iso2iml game.iso -o work/game.iml --extract\n"
    "\n"
    "Writes game.iml, the layout, and game.ims, the image's leading structures. With\n"
    "--extract also every file that the layout lists, and game.gaps with what the image\n"
    "holds besides; then \"vantrel iml2iso\" can make the image again.";

/// Options of the command's own.
struct SExportOptions {
    std::string path;
    std::string extractionFolder;
    CLI::Option* extract = nullptr;

    bool Extracts() const { return extract->count() > 0; }
    /// --path names a folder, also without its closing separator.
    std::string FolderText() const {
        return path.empty() || path.find_last_of("\\/") == path.size() - 1 ? path : path + kPathSeparator;
    }
    /// Where files go unless told otherwise: to where the layout says that they are.
    std::string FolderFor(const std::string& layout) const {
        if (!extractionFolder.empty()) {
            return WithSeparator(extractionFolder);
        }
        return path.empty() ? FolderOf(layout) : WithSeparator(path);
    }
};

/// The word behind --extract is taken for its folder, also where FILE was meant.
std::string FolderProblem(const std::string& folder) {
    return FileKindOf(folder) == EFileKind::File
               ? folder + " is a file and no folder; give FILE before --extract, or write --extract=FOLDER"
               : std::string();
}

void AddOptions(CLI::App& command, SExportOptions& options) {
    command.add_option(
        "--path", options.path,
        "Folder that the layout puts before every path, without its drive (otherwise paths are relative)");
    options.extract =
        command
            .add_option("--extract", options.extractionFolder,
                        "Also write the listed files below this folder (by default that of --path, or else the "
                        "layout's)")
            ->expected(0, 1)
            ->check(CLI::Validator(FolderProblem, ""));
}

void Run(const SExportOptions& options, const SConversionJob& job, COperation& operation) {
    SExportRequest request;
    request.imagePath = job.input;
    request.layoutPath = job.output;
    request.folderText = options.FolderText();
    request.manner = job.manner;
    if (options.Extracts()) {
        request.extractionFolder = options.FolderFor(job.output);
    }
    ExportImage(request, operation);
}

}  // namespace

void AddExportCommands(CLI::App& app, ChosenCommand& chosen) {
    const auto options = std::make_shared<SExportOptions>();
    SConversionCommand command;
    command.name = "iso2iml";
    command.summary = "Export an image to a layout, from which it can be rebuilt";
    command.examples = kExamples;
    command.outputName = [](const std::string& fileName) { return BaseNameOf(fileName) + ".iml"; };
    command.companions = [options](const std::string& output) {
        std::vector<std::string> companions = {LeadingPathOf(output)};
        if (options->Extracts()) {
            companions.push_back(GapPathOf(output));
        }
        return companions;
    };
    command.addOptions = [options](CLI::App& added) { AddOptions(added, *options); };
    command.run = [options](const SConversionJob& job, COperation& operation) { Run(*options, job, operation); };
    AddConversionCommand(app, chosen, command);
}

}  // namespace vantrel
