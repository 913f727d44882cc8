// The commands of the compressed forms.
#include <algorithm>
#include <thread>

#include "compress/cso.h"
#include "compress/dax.h"
#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/option_set.h"
#include "files/input_file.h"
#include "files/path.h"
#include "files/refused.h"
#include "image/form.h"

namespace vantrel {

namespace {

using Conversion = void (*)(const SCompressionRequest&, COperation&);

constexpr int kDefaultLevel = 9;
constexpr int kMaxWorkers = 256;

enum class EDirection { Compress, Expand };

std::string Examples(const std::string& name, const std::string& extension, EDirection direction) {
    const std::string command = "  vantrel " + name;
    return direction == EDirection::Compress
               ? "Examples:\n" + command + " game.iso\n" + command + " -l 6 -o /discs/game" + extension + " game.iso"
               : "Examples:\n" + command + " game" + extension + "\n" + command + " -o game.iso game" + extension;
}

/// "a CSO file"
std::string FileOf(EForm form) {
    const std::string name = NameOf(form);
    return (name.front() == 'I' ? "an " : "a ") + name + " file";
}

/// Refuses a file that holds another form than the wanted one, as far as the file can be read and its content tells.
void RefuseOtherForms(const std::string& path, EForm form) {
    CInputFile file;
    const EForm found = file.Open(path) ? FormOf(file) : EForm::Unknown;
    if (found != form && found != EForm::Unknown) {
        throw CRefused(path + " is not " + FileOf(form) + ": it is " + FileOf(found));
    }
}

/// A conversion into a compressed form or out of it.
class CCompressCommand : public CConversionCommand {
public:
    /// `extension` is that of the compressed form, `input` the form of the files to convert.
    CCompressCommand(const char* name, const char* summary, const char* extension, EDirection direction, EForm input,
                     Conversion conversion)
        : CConversionCommand({name, summary, Examples(name, extension, direction)}),
          m_extension(extension),
          m_direction(direction),
          m_input(input),
          m_conversion(conversion) {}

    void Declare(COptionSet& options) override {
        DeclareFiles(options);
        // Expansions accept a level too, so that a script can use one set of options for both directions.
        options.AddNumber("-l,--level", m_level, 1, 9, "Compression level, 1 (fast) to 9 (small), by default 9");
        options.AddNumber("-j,--jobs", m_workers, 1, kMaxWorkers,
                          "Threads to use, by default one for each core; the output is the same for any number");
        DeclareOutput(options);
    }

    std::string OutputName(const std::string& inputName) const override {
        return WithExtension(inputName, m_direction == EDirection::Compress ? m_extension : ".iso");
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        const auto workers = static_cast<std::uint32_t>(m_workers);
        try {
            m_conversion(DirectConversion(job.input, job.output, job.manner, workers, m_level), operation);
        } catch (const CConversionFailed&) {
            RefuseOtherForms(job.input, m_input);
            throw;
        }
    }

private:
    const char* m_extension;
    EDirection m_direction;
    EForm m_input;
    Conversion m_conversion;
    int m_level = kDefaultLevel;
    int m_workers = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, unsigned{kMaxWorkers}));
};

}  // namespace

void AddCompressCommands(Commands& commands) {
    const auto add = [&commands](auto... arguments) {
        commands.push_back(std::make_unique<CCompressCommand>(arguments...));
    };
    add("iso2cso", "Compress a PSP image into a CSO file", ".cso", EDirection::Compress, EForm::Iso, IsoToCso);
    add("cso2iso", "Expand a CSO file into an image", ".cso", EDirection::Expand, EForm::Cso, CsoToIso);
    add("iso2dax", "Compress a PSP image into a DAX file", ".dax", EDirection::Compress, EForm::Iso, IsoToDax);
    add("dax2iso", "Expand a DAX file into an image", ".dax", EDirection::Expand, EForm::Dax, DaxToIso);
}

}  // namespace vantrel
