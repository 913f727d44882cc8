// Commands of the raw images.
#include "console/commands.h"
#include "files/path.h"
#include "raw/bin_to_iso.h"
#include "raw/iso_to_bin.h"

namespace vantrel {

namespace {

SConversionCommand IsoToBinCommand() {
    SConversionCommand command;
    command.name = "iso2bin";
    command.summary = "Expand a PlayStation 2 CD image into a raw image with a CUE sheet";
    command.examples =
        "The CUE sheet gets the raw image's name with the extension .cue.\n"
        "Examples:\n  vantrel iso2bin game.iso\n  vantrel iso2bin -o /discs/game.bin game.iso";
    command.outputName = [](const std::string& fileName) { return SplitPath(fileName).name + ".bin"; };
    command.companions = [](const std::string& output) { return std::vector<std::string>{CuePathOf(output)}; };
    command.run = [](const SConversionJob& job, COperation& operation) {
        IsoToBinDirectly({job.input, job.output, CuePathOf(job.output), job.manner}, operation);
    };
    return command;
}

SConversionCommand BinToIsoCommand() {
    SConversionCommand command;
    command.name = "bin2iso";
    command.summary = "Take the plain image out of a raw Mode 2 image";
    command.examples = "Examples:\n  vantrel bin2iso game.bin\n  vantrel bin2iso -o game.iso game.bin";
    command.outputName = [](const std::string& fileName) { return "new-" + BaseNameOf(fileName) + ".iso"; };
    command.run = [](const SConversionJob& job, COperation& operation) {
        BinToIso({job.input, job.output, job.manner}, operation);
    };
    return command;
}

}  // namespace

void AddRawCommands(CLI::App& app, ChosenCommand& chosen) {
    AddConversionCommand(app, chosen, IsoToBinCommand());
    AddConversionCommand(app, chosen, BinToIsoCommand());
}

}  // namespace vantrel
