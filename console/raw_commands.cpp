// The commands of raw images.
#include "console/commands.h"
#include "console/conversion_command.h"
#include "files/path.h"
#include "raw/bin_to_iso.h"
#include "raw/iso_to_bin.h"

namespace vantrel {

namespace {

class CIsoToBinCommand : public CConversionCommand {
public:
    CIsoToBinCommand()
        : CConversionCommand({"iso2bin", "Expand a PlayStation 2 CD image into a raw image with a CUE sheet",
                              "The CUE sheet gets the raw image's name with the extension .cue.\n"
                              "Examples:\n  vantrel iso2bin game.iso\n  vantrel iso2bin -o /discs/game.bin game.iso"}) {
    }

    std::string OutputName(const std::string& inputName) const override { return WithExtension(inputName, ".bin"); }
    std::vector<std::string> Companions(const std::string& output) const override { return {CuePathOf(output)}; }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        IsoToBin({job.input, job.output, CuePathOf(job.output), job.manner}, operation);
    }
};

class CBinToIsoCommand : public CConversionCommand {
public:
    CBinToIsoCommand()
        : CConversionCommand({"bin2iso", "Extract the plain image from a raw Mode 2 image",
                              "Examples:\n  vantrel bin2iso game.bin\n  vantrel bin2iso -o game.iso game.bin"}) {}

    std::string OutputName(const std::string& inputName) const override { return WithExtension(inputName, ".iso"); }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        BinToIso({job.input, job.output, job.manner, true}, operation);
    }
};

}  // namespace

void AddRawCommands(Commands& commands) {
    commands.push_back(std::make_unique<CIsoToBinCommand>());
    commands.push_back(std::make_unique<CBinToIsoCommand>());
}

}  // namespace vantrel
