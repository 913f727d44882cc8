// The commands of the compressed forms.
#include "compress/cso.h"
#include "compress/dax.h"
#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/effort_options.h"
#include "files/input_file.h"
#include "files/path.h"
#include "files/refused.h"
#include "image/conversion.h"

namespace vantrel {

namespace {

using Conversion = void (*)(const SCompressionRequest&, COperation&);

enum class EDirection { Compress, Expand };

std::string Examples(const std::string& name, const std::string& extension, EDirection direction) {
    const std::string command = "  vantrel " + name;
    return direction == EDirection::Compress
               ? "Examples:\n" + command + " game.iso\n" + command + " -l 6 -o /discs/game" + extension + " game.iso"
               : "Examples:\n" + command + " game" + extension + "\n" + command + " -o game.iso game" + extension;
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
    /// `extension` is that of the compressed form, `input` the form of the files to expand, `openPattern` the text for
    /// an image that cannot be opened.
    CCompressCommand(const char* name, const char* summary, const char* extension, EDirection direction, EForm input,
                     Conversion conversion, const char* openPattern = "")
        : CConversionCommand({name, summary, Examples(name, extension, direction)}),
          m_extension(extension),
          m_direction(direction),
          m_input(input),
          m_conversion(conversion),
          m_openPattern(openPattern) {}

    void Declare(COptionSet& options) override {
        DeclareFiles(options);
        // Expansions accept a level too, so that a script can use one set of options for both directions.
        m_effort.Declare(options);
        DeclareOutput(options);
    }

    std::string OutputName(const std::string& inputName) const override {
        return WithExtension(inputName, m_direction == EDirection::Compress ? m_extension : ".iso");
    }

    void Convert(const SConversionJob& job, COperation& operation) const override {
        SCompressionRequest request =
            DirectConversion(job.input, job.output, job.manner, m_effort.Workers(), m_effort.Level());
        if (m_direction == EDirection::Compress) {
            ConvertFromAnyForm(request, operation);
        } else {
            ConvertFromOneForm(request, operation);
        }
    }

private:
    void ConvertFromAnyForm(SCompressionRequest& request, COperation& operation) const {
        const std::unique_ptr<CImageSource> image = OpenContainer(request.imagePath, m_openPattern, operation);
        request.image = image.get();
        m_conversion(request, operation);
        if (image) {
            WarnOfOtherParts(*image, request.imagePath, operation);
        }
    }

    void ConvertFromOneForm(const SCompressionRequest& request, COperation& operation) const {
        try {
            m_conversion(request, operation);
        } catch (const CConversionFailed&) {
            RefuseOtherForms(request.imagePath, m_input);
            throw;
        }
    }

    const char* m_extension;
    EDirection m_direction;
    EForm m_input;  ///< Of an expansion.
    Conversion m_conversion;
    const char* m_openPattern;
    CEffortOptions m_effort;
};

}  // namespace

void AddCompressCommands(Commands& commands) {
    const auto add = [&commands](auto... arguments) {
        commands.push_back(std::make_unique<CCompressCommand>(arguments...));
    };
    add("iso2cso", "Compress a PSP image into a CSO file", ".cso", EDirection::Compress, EForm::Iso, IsoToCso,
        "Code 1001e - Error Opening %s");
    add("cso2iso", "Expand a CSO file into an image", ".cso", EDirection::Expand, EForm::Cso, CsoToIso);
    add("iso2dax", "Compress a PSP image into a DAX file", ".dax", EDirection::Compress, EForm::Iso, IsoToDax,
        "Code 9101e - Error Opening %s");
    add("dax2iso", "Expand a DAX file into an image", ".dax", EDirection::Expand, EForm::Dax, DaxToIso);
}

}  // namespace vantrel
