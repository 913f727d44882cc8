#include "raw/converter.h"

#include <optional>
#include <ostream>

#include "files/input_file.h"
#include "files/output_file.h"
#include "files/letter_case.h"
#include "operation/text.h"
#include "raw/sector_expander.h"

namespace vantrel {

namespace {

constexpr const char* kUsage =
    "usage: tmpfile INPUT OUTPUT [/MODE2] [/POSTGAP]\n"
    "  INPUT     image of 2048-byte sectors\n"
    "  OUTPUT    raw image of 2352-byte sectors, written over an existing one\n"
    "  /MODE2    Mode 2 Form 1 sectors instead of Mode 1\n"
    "  /POSTGAP  150 sectors of zeros behind the data\n";
constexpr std::size_t kFileWords = 2;

struct SConverterTask {
    std::string input;
    std::string output;
    SExpansion expansion;
};

/// The first two words are files whatever they look like; everything behind them is a switch.
std::optional<SConverterTask> TaskOf(const std::vector<std::string>& words, std::ostream& errors) {
    if (words.size() < kFileWords) {
        errors << kUsage;
        return std::nullopt;
    }
    SConverterTask task = {words[0], words[1], {}};
    for (std::size_t i = kFileWords; i < words.size(); ++i) {
        const std::string word = LowerAscii(words[i]);
        if (word == "/mode2") {
            task.expansion.mode = ESectorMode::Mode2Form1;
        } else if (word == "/postgap") {
            task.expansion.postgap = true;
        } else {
            errors << "tmpfile: unknown switch " << words[i] << "\n" << kUsage;
            return std::nullopt;
        }
    }
    return task;
}

/// Takes the length of the image into the task; the reason when it cannot be converted, or an empty text.
std::string Measure(const CInputFile& image, SConverterTask& task) {
    const std::int64_t size = image.Size();
    if (size < 0) {
        return "cannot read " + task.input + ": " + LastFileError();
    }
    if (size % static_cast<std::int64_t>(kUserDataSize) != 0) {
        return task.input + " is not whole sectors of 2048 bytes";
    }
    const std::int64_t sectors = size / static_cast<std::int64_t>(kUserDataSize);
    if (sectors + (task.expansion.postgap ? kRawPostgapSectors : 0) > kMostRawSectors) {
        return task.input + " is too long for a CD: addresses end at 99:59:74";
    }
    task.expansion.sectors = static_cast<std::uint32_t>(sectors);
    return "";
}

/// Tells the percentage when it has changed.
class CPercentTeller {
public:
    CPercentTeller(std::ostream& progress, std::uint32_t all) : m_progress(progress), m_all(all) {}

    void Tell(std::uint32_t done) {
        const auto percent = static_cast<std::uint32_t>(std::uint64_t{done} * 100 / m_all);
        if (percent != m_told) {
            m_told = percent;
            m_progress << Format("\r %u%% completed.", percent) << std::flush;
        }
    }

private:
    std::ostream& m_progress;
    std::uint32_t m_all;
    std::uint32_t m_told = 0;
};

/// The reason when it fails, or an empty text.
std::string Convert(SConverterTask& task, std::ostream& progress) {
    CInputFile image;
    if (!image.Open(task.input)) {
        return "cannot open " + task.input + ": " + LastFileError();
    }
    std::string problem = Measure(image, task);
    if (!problem.empty()) {
        return problem;
    }
    if (IsSameFile(task.input, task.output)) {
        return "the output would be the input itself";
    }
    COutputFile output;
    if (!output.Open(task.output, EOutputManner::InPlace)) {
        return "cannot create " + task.output + ": " + LastFileError();
    }
    CPercentTeller teller(progress, task.expansion.AllSectors());
    switch (ExpandSectors(image, task.expansion, output, [&](std::uint32_t done) { teller.Tell(done); })) {
        case EExpanded::ReadFailed:
            return "cannot read " + task.input;
        case EExpanded::WriteFailed:
            return output.FailureText();
        case EExpanded::Whole:
            break;
    }
    if (!output.Finish()) {
        return output.FailureText();
    }
    progress << "\n";
    return "";
}

}  // namespace

EConverterExit RunConverter(const std::vector<std::string>& words, std::ostream& progress, std::ostream& errors) {
    std::optional<SConverterTask> task = TaskOf(words, errors);
    if (!task) {
        return EConverterExit::Usage;
    }
    const std::string problem = Convert(*task, progress);
    if (!problem.empty()) {
        errors << "tmpfile: " << problem << "\n";
        return EConverterExit::Failed;
    }
    return EConverterExit::Done;
}

}  // namespace vantrel
