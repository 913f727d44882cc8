// The command that converts an image of any form into any other.
#include <bit>

#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/effort_options.h"
#include "files/path.h"
#include "image/conversion.h"
#include "raw/iso_to_bin.h"

namespace vantrel {

namespace {

constexpr const char* kNotes =
    "The form of the output is that of --to, or else the extension of --output. FILE may have any form that "
    "\"vantrel info\" reads. A BIN file comes with a CUE sheet. ZSO has no levels.\n"
    "Examples:\n"
    "  vantrel convert --to zso game.iso\n"
    "  vantrel convert -o game.dax game.cso\n"
    "  vantrel convert --to cso --block 16384 --verify *.cue";

constexpr int kSmallestBlock = 2048;
constexpr int kLargestBlock = 1 << 20;

struct SOutputForm {
    EForm form;
    const char* name;
    const char* extension;
};

constexpr SOutputForm kOutputForms[] = {
    {EForm::Iso, "iso", ".iso"}, {EForm::Bin, "bin", ".bin"}, {EForm::Cso, "cso", ".cso"},
    {EForm::Zso, "zso", ".zso"}, {EForm::Dax, "dax", ".dax"},
};

class CConvertCommand : public CConversionCommand {
public:
    CConvertCommand() : CConversionCommand({"convert", "Convert an image of any form into any other", kNotes}) {}

    void Declare(COptionSet& options) override {
        DeclareFiles(options);
        options.AddWord("--to", "FORM", m_to, "Form of the output: iso, bin, cso, zso or dax");
        options.AddNumber("--block", m_block, kSmallestBlock, kLargestBlock,
                          "Block size of CSO and ZSO, a power of two, by default 2048; 16384 if the output exceeds "
                          "2 GiB");
        m_effort.Declare(options);
        options.AddFlag("--verify", m_readBack, "Read the output back and compare it before it gets its name");
        DeclareOutput(options);
    }

    std::string UsageProblem() const override {
        if (std::string problem = CConversionCommand::UsageProblem(); !problem.empty()) {
            return problem;
        }
        const SOutputForm* const form = OutputForm();
        if (form == nullptr) {
            return m_to.empty() ? "give --to FORM, or an --output whose extension is .iso, .bin, .cso, .zso or .dax"
                                : "--to: " + m_to + " is none of iso, bin, cso, zso and dax";
        }
        const bool hasBlocks = form->form == EForm::Cso || form->form == EForm::Zso;
        if (m_block != 0 && !hasBlocks) {
            return "--block: only CSO and ZSO files have blocks of a chosen size";
        }
        return m_block != 0 && !std::has_single_bit(static_cast<unsigned>(m_block))
                   ? "--block: " + std::to_string(m_block) + " is not a power of two"
                   : std::string();
    }

    std::string OutputName(const std::string& inputName) const override {
        return WithExtension(inputName, OutputForm()->extension);
    }

    std::vector<std::string> Companions(const std::string& output) const override {
        return OutputForm()->form == EForm::Bin ? std::vector{CuePathOf(output)} : std::vector<std::string>();
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        const std::unique_ptr<CImageSource> image = OpenInput(job.input);
        SImageConversion conversion = {job.input, *image, OutputForm()->form, job.output, job.manner};
        conversion.workers = m_effort.Workers();
        conversion.level = m_effort.Level();
        conversion.readBack = m_readBack;
        if (m_block != 0) {
            conversion.blockSize = static_cast<std::uint32_t>(m_block);
        }
        ConvertImage(conversion, operation);
        WarnOfOtherParts(*image, job.input, operation);
    }

private:
    /// Null if no form is named.
    const SOutputForm* OutputForm() const {
        for (const SOutputForm& form : kOutputForms) {
            const bool isNamed = m_to.empty() ? EqualIgnoringCase(SplitPath(Output()).extension, form.extension)
                                              : EqualIgnoringCase(m_to, form.name);
            if (isNamed) {
                return &form;
            }
        }
        return nullptr;
    }

    std::string m_to;
    int m_block = 0;
    bool m_readBack = false;
    CEffortOptions m_effort;
};

}  // namespace

void AddConvertCommand(Commands& commands) {
    commands.push_back(std::make_unique<CConvertCommand>());
}

}  // namespace vantrel
