#include "raw/converter.h"

#include <optional>
#include <ostream>

#include "files/letter_case.h"
#include "operation/progress.h"
#include "operation/text.h"
#include "raw/sector_expander.h"

namespace vantrel {

namespace {

constexpr const char* kUsage =
    "usage: tmpfile INPUT OUTPUT [/MODE2] [/POSTGAP]\n"
    "  INPUT     image of 2048-byte sectors\n"
    "  OUTPUT    raw image of 2352-byte sectors; an existing file is replaced\n"
    "  /MODE2    write Mode 2 Form 1 sectors instead of Mode 1 sectors\n"
    "  /POSTGAP  append 150 sectors of zeros\n";
constexpr std::size_t kFileArguments = 2;

struct SConverterTask {
    std::string input;
    std::string output;
    ESectorMode mode = ESectorMode::Mode1;
    bool postgap = false;
};

/// The first two arguments are always files, whatever they look like; all others are switches.
std::optional<SConverterTask> ParseArguments(const std::vector<std::string>& arguments, std::ostream& errors) {
    if (arguments.size() < kFileArguments) {
        errors << kUsage;
        return std::nullopt;
    }
    SConverterTask task = {arguments[0], arguments[1]};
    for (std::size_t i = kFileArguments; i < arguments.size(); ++i) {
        const std::string argument = LowerAscii(arguments[i]);
        if (argument == "/mode2") {
            task.mode = ESectorMode::Mode2Form1;
        } else if (argument == "/postgap") {
            task.postgap = true;
        } else {
            errors << "tmpfile: unknown switch " << arguments[i] << "\n" << kUsage;
            return std::nullopt;
        }
    }
    return task;
}

/// Prints the percentage whenever it changes.
class CConverterOperation : public COperation {
public:
    explicit CConverterOperation(std::ostream& output) : m_output(output) {}

    void SetTotal(std::int64_t units) override { m_total = units; }

    void SetDone(std::int64_t units) override {
        const auto percent = static_cast<std::uint32_t>(PercentOf(units, m_total));
        if (percent != m_printed) {
            m_printed = percent;
            m_output << Format("\r %u%% completed.", percent) << std::flush;
        }
    }

private:
    std::ostream& m_output;
    std::int64_t m_total = 0;
    std::uint32_t m_printed = 0;
};

void Convert(const SConverterTask& task, COperation& operation) {
    CCheckedInput image(operation);
    if (!image.Open(task.input)) {
        operation.Fail("Cannot open " + task.input + ": " + LastFileError());
    }
    const SExpansion expansion = PlanExpansion(image, task.mode, task.postgap, operation);
    if (IsSameFile(task.input, task.output)) {
        operation.Fail("Input and output are the same file");
    }
    CCheckedOutput output(operation);
    if (!output.Open(task.output, EOutputManner::InPlace)) {
        operation.Fail(CreationProblem(task.output));
    }
    ExpandSectors(image, expansion, output, operation);
    output.FinishOrFail();
}

}  // namespace

EConverterExit RunConverter(const std::vector<std::string>& arguments, std::ostream& progress, std::ostream& errors) {
    const std::optional<SConverterTask> task = ParseArguments(arguments, errors);
    if (!task) {
        return EConverterExit::Usage;
    }
    CConverterOperation operation(progress);
    try {
        Convert(*task, operation);
    } catch (const CConversionFailed& failure) {
        errors << "tmpfile: " << failure.what() << "\n";
        return EConverterExit::Failed;
    }
    progress << "\n";
    return EConverterExit::Done;
}

}  // namespace vantrel
