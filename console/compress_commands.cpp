// Commands of the compressed forms.
#include "compress/cso.h"
#include "compress/dax.h"
#include "console/commands.h"
#include "files/path.h"

namespace vantrel {

namespace {

using Conversion = void (*)(const SCompressionRequest&, COperation&);

SConversionCommand Compression(const char* name, const char* summary, const char* extension, Conversion conversion) {
    SConversionCommand command;
    command.name = name;
    command.summary = summary;
    command.takesLevel = true;
    command.takesJobs = true;
    command.examples = std::string("Examples:\n  vantrel ") + name + " game.iso\n  vantrel " + name +
                       " -l 6 -o /discs/game" + extension + " game.iso";
    command.outputName = [extension](const std::string& fileName) { return BaseNameOf(fileName) + extension; };
    command.run = [conversion](const SConversionJob& job, COperation& operation) {
        conversion(DirectConversion(job.input, job.output, job.manner, job.jobs), operation);
    };
    return command;
}

SConversionCommand Expansion(const char* name, const char* summary, const char* extension, Conversion conversion) {
    SConversionCommand command;
    command.name = name;
    command.summary = summary;
    command.takesLevel = true;  // without effect, so that one set of options serves both directions of a script
    command.takesJobs = true;
    command.examples = std::string("Examples:\n  vantrel ") + name + " game" + extension + "\n  vantrel " + name +
                       " -o game.iso game" + extension;
    command.outputName = [](const std::string& fileName) { return "new-" + BaseNameOf(fileName) + ".iso"; };
    command.run = [conversion](const SConversionJob& job, COperation& operation) {
        conversion(DirectConversion(job.input, job.output, job.manner, job.jobs), operation);
    };
    return command;
}

}  // namespace

void AddCompressCommands(CLI::App& app, ChosenCommand& chosen) {
    AddConversionCommand(app, chosen, Compression("iso2cso", "Compress a PSP image into a CSO file", ".cso", IsoToCso));
    AddConversionCommand(app, chosen, Expansion("cso2iso", "Expand a CSO file into an image", ".cso", CsoToIso));
    AddConversionCommand(app, chosen, Compression("iso2dax", "Compress a PSP image into a DAX file", ".dax", IsoToDax));
    AddConversionCommand(app, chosen, Expansion("dax2iso", "Expand a DAX file into an image", ".dax", DaxToIso));
}

}  // namespace vantrel
