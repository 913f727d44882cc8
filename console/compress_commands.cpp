// The commands of the compressed forms.
#include <algorithm>
#include <thread>

#include "compress/cso.h"
#include "compress/dax.h"
#include "console/commands.h"
#include "console/conversion_command.h"
#include "console/option_set.h"
#include "files/path.h"

namespace vantrel {

namespace {

using Conversion = void (*)(const SCompressionRequest&, COperation&);

constexpr int kDefaultLevel = 9;
constexpr int kMaxWorkers = 256;

/// A conversion into a compressed form or out of it.
class CCompressCommand : public CConversionCommand {
public:
    CCompressCommand(SCommandTexts texts, Conversion conversion)
        : CConversionCommand(std::move(texts)), m_conversion(conversion) {}

    void Declare(COptionSet& options) final {
        DeclareFiles(options);
        // Expansions accept a level too, so that a script can use one set of options for both directions.
        options.AddNumber("-l,--level", m_level, 1, 9, "Compression level, 1 (fast) to 9 (small)");
        options.AddNumber("-j,--jobs", m_workers, 1, kMaxWorkers,
                          "Threads to use, by default one for each core; the output is the same for any number");
        DeclareOutput(options);
    }

    void Convert(const SConversionJob& job, COperation& operation) const final {
        m_conversion(
            DirectConversion(job.input, job.output, job.manner, static_cast<std::uint32_t>(m_workers), m_level),
            operation);
    }

private:
    Conversion m_conversion;
    int m_level = kDefaultLevel;
    int m_workers = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, unsigned{kMaxWorkers}));
};

class CCompression : public CCompressCommand {
public:
    CCompression(const std::string& name, const char* summary, const std::string& extension, Conversion conversion)
        : CCompressCommand({name, summary,
                            "Examples:\n  vantrel " + name + " game.iso\n  vantrel " + name + " -l 6 -o /discs/game" +
                                extension + " game.iso"},
                           conversion),
          m_extension(extension) {}

    std::string OutputName(const std::string& inputName) const override { return BaseNameOf(inputName) + m_extension; }

private:
    std::string m_extension;
};

class CExpansion : public CCompressCommand {
public:
    CExpansion(const std::string& name, const char* summary, const std::string& extension, Conversion conversion)
        : CCompressCommand({name, summary,
                            "Examples:\n  vantrel " + name + " game" + extension + "\n  vantrel " + name +
                                " -o game.iso game" + extension},
                           conversion) {}

    std::string OutputName(const std::string& inputName) const override {
        return "new-" + BaseNameOf(inputName) + ".iso";
    }
};

}  // namespace

void AddCompressCommands(Commands& commands) {
    commands.push_back(
        std::make_unique<CCompression>("iso2cso", "Compress a PSP image into a CSO file", ".cso", IsoToCso));
    commands.push_back(std::make_unique<CExpansion>("cso2iso", "Expand a CSO file into an image", ".cso", CsoToIso));
    commands.push_back(
        std::make_unique<CCompression>("iso2dax", "Compress a PSP image into a DAX file", ".dax", IsoToDax));
    commands.push_back(std::make_unique<CExpansion>("dax2iso", "Expand a DAX file into an image", ".dax", DaxToIso));
}

}  // namespace vantrel
