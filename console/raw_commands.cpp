// The commands of raw images.
#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/option_set.h"
#include "files/path.h"
#include "image/conversion.h"
#include "raw/bin_to_iso.h"
#include "raw/iso_to_bin.h"

namespace vantrel {

namespace {

class CIsoToBinCommand : public CConversionCommand {
public:
    CIsoToBinCommand()
        : CConversionCommand(
              {"iso2bin", "Expand a PlayStation 2 CD image into a raw image with a CUE sheet",
               "The CUE sheet gets the raw image's name with the extension .cue. An image that is exactly 150 "
               "sectors shorter than its volume gets its postgap; a truncated one is converted with a "
               "notice.\n"
               "Examples:\n  vantrel iso2bin game.iso\n  vantrel iso2bin -o /discs/game.bin game.iso"}) {}

    std::string OutputName(const std::string& inputName) const override { return WithExtension(inputName, ".bin"); }
    std::vector<std::string> Companions(const std::string& output) const override { return {CuePathOf(output)}; }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        const std::unique_ptr<CImageSource> image = OpenContainer(job.input, "Code 103- Error Opening %s", operation);
        IsoToBin({job.input, job.output, CuePathOf(job.output), job.manner, image.get()}, operation);
        if (image) {
            WarnOfOtherParts(*image, job.input, operation);
        }
    }
};

class CBinToIsoCommand : public CConversionCommand {
public:
    CBinToIsoCommand()
        : CConversionCommand({"bin2iso", "Extract the plain image from a raw image or the data track of a CUE sheet",
                              "Sync field, mode and EDC of every sector are checked; an image with damaged sectors is "
                              "refused.\n"
                              "The exit status is 1 if the image does not hold all data of the input: for damaged "
                              "sectors with --ignore-errors, and for a sheet with further tracks.\n"
                              "Examples:\n  vantrel bin2iso game.bin\n  vantrel bin2iso game.cue\n"
                              "  vantrel bin2iso -o game.iso game.bin"}) {}

    void Declare(COptionSet& options) override {
        CConversionCommand::Declare(options);
        options.AddFlag("--ignore-errors", m_ignoreErrors, "Convert damaged sectors, too, with exit status 1");
    }

    std::string OutputName(const std::string& inputName) const override { return WithExtension(inputName, ".iso"); }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        BinToIso({job.input, job.output, job.manner, true, m_ignoreErrors}, operation);
    }

private:
    bool m_ignoreErrors = false;
};

}  // namespace

void AddRawCommands(Commands& commands) {
    commands.push_back(std::make_unique<CIsoToBinCommand>());
    commands.push_back(std::make_unique<CBinToIsoCommand>());
}

}  // namespace vantrel
