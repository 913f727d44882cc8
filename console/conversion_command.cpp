#include "console/conversion_command.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <thread>

#include "console/console_operation.h"
#include "console/file_patterns.h"
#include "console/interrupt.h"
#include "console/refused.h"
#include "files/input_file.h"
#include "files/path.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr int kDefaultLevel = 9;
constexpr std::uint32_t kMostJobs = 256;

struct SOptions {
    std::vector<std::string> files;
    std::string output;
    std::string outputFolder;
    int level = kDefaultLevel;
    std::uint32_t jobs = std::clamp(std::thread::hardware_concurrency(), 1U, kMostJobs);
    bool force = false;
    bool quiet = false;
    bool keepGoing = false;
};

/// How the files of one command came off.
struct STally {
    int converted = 0;
    int failed = 0;
    int skipped = 0;
    std::int64_t bytesIn = 0;
    std::int64_t bytesOut = 0;
};

/// Length of a file for reports, 0 when it cannot be told.
std::int64_t SizeOf(const std::string& path) {
    return std::max<std::int64_t>(FileSizeOf(path), 0);
}

/// "12345 bytes"
std::string LengthText(const std::string& path) {
    const std::int64_t size = FileSizeOf(path);
    return size >= 0 ? BytesText(size) : "length unknown";
}

/// Texts of the program end in a line break or not; a line on a terminal ends in one.
std::string OneLine(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

/// Runs one command over its files.
class CConversionRun {
public:
    CConversionRun(const SConversionCommand& command, const SOptions& options)
        : m_command(command), m_options(options) {}

    int Run() {
        for (const std::string& input : m_options.files) {
            if (m_tally.failed > 0 && !m_options.keepGoing) {
                ++m_tally.skipped;
            } else {
                RunOne(input);
            }
        }
        if (m_options.files.size() > 1 && !m_options.quiet) {
            TellSummary();
        }
        return static_cast<int>(m_tally.failed > 0 ? EExit::Failed : EExit::Done);
    }

private:
    void RunOne(const std::string& input) {
        SConversionJob job;
        job.input = input;
        job.jobs = m_options.jobs;
        try {
            job.output = OutputOf(input);
            job.manner = m_options.force ? EOutputManner::CommitReplace : EOutputManner::CommitNew;
            RefuseWhatWouldBeLost(job);
            Convert(job);
            ++m_tally.converted;
        } catch (const CRefused& refusal) {
            TellFailure(refusal.what());
        } catch (const CConversionFailed& failure) {
            TellFailure(OneLine(failure.what()) + CauseOf(job));
        }
    }

    void Convert(const SConversionJob& job) {
        const std::int64_t size = SizeOf(job.input);
        CProgressLine progress(!m_options.quiet && IsTerminal(), FileNameOf(job.input), size);
        CConsoleOperation operation(m_options.level, progress);
        m_command.run(job, operation);
        progress.Clear();
        m_tally.bytesIn += size;
        m_tally.bytesOut += SizeOf(job.output);
        m_written.insert(job.output);
        if (!m_options.quiet) {
            TellResult(job, operation);
        }
    }

    bool IsInPlace() const { return !m_command.outputName; }

    std::string OutputOf(const std::string& input) const {
        if (IsInPlace()) {
            return input;
        }
        if (!m_options.output.empty()) {
            return m_options.output;
        }
        const std::string folder =
            m_options.outputFolder.empty() ? FolderOf(input) : WithSeparator(m_options.outputFolder);
        return folder + m_command.outputName(FileNameOf(input));
    }

    std::vector<std::string> AllOutputs(const SConversionJob& job) const {
        std::vector<std::string> outputs = {job.output};
        if (m_command.companions) {
            for (std::string& companion : m_command.companions(job.output)) {
                outputs.push_back(std::move(companion));
            }
        }
        return outputs;
    }

    void RefuseWhatWouldBeLost(const SConversionJob& job) const {
        if (IsInPlace()) {
            return;
        }
        for (const std::string& output : AllOutputs(job)) {
            const EFileKind kind = FileKindOf(output);
            if (kind == EFileKind::Missing) {
                continue;
            }
            if (IsSameFile(job.input, output)) {
                throw CRefused(job.input + ": the output would be the input itself");
            }
            if (kind != EFileKind::File) {
                throw CRefused(output + " exists and is not a file");
            }
            if (m_written.contains(output)) {
                throw CRefused(job.input + ": " + output + " was just written for another file");
            }
            if (!m_options.force) {
                throw CRefused(output + " exists already; -f replaces it");
            }
        }
    }

    /// What stands in the way of a failed conversion, as far as it can be seen from outside: " (cause)" or nothing.
    std::string CauseOf(const SConversionJob& job) const {
        CNativeFile input;
        if (FileKindOf(job.input) == EFileKind::Folder) {
            return " (" + job.input + " is a folder)";
        }
        if (!input.Open(job.input, IsInPlace() ? EOpenMode::ReadWrite : EOpenMode::Read, ESharing::Anyone)) {
            return " (" + job.input + ": " + LastFileError() + ")";
        }
        if (IsInPlace()) {
            return "";
        }
        const std::string folder = FolderOf(job.output);
        if (!folder.empty() && FileKindOf(folder) != EFileKind::Folder) {
            return " (there is no folder " + folder + ")";
        }
        COutputFile probe;
        if (!probe.Open(job.output, EOutputManner::CommitNew)) {
            return " (" + job.output + ": " + LastFileError() + ")";
        }
        return "";
    }

    void TellFailure(const std::string& text) {
        ++m_tally.failed;
        std::fprintf(stderr, "vantrel %s: %s\n", m_command.name.c_str(), text.c_str());
    }

    void TellResult(const SConversionJob& job, const CConsoleOperation& operation) const {
        if (!operation.Notice().empty()) {
            std::printf("%s\n", OneLine(operation.Notice()).c_str());
        }
        if (!operation.DoneText().empty()) {
            std::printf("%s -> %s: %s (%s)\n", job.input.c_str(), job.output.c_str(), operation.DoneText().c_str(),
                        LengthText(job.output).c_str());
        }
        std::fflush(stdout);
    }

    void TellSummary() const {
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
        std::fprintf(stderr, "%d converted, %d failed, %d skipped; %lld bytes in, %lld bytes out, %.1f seconds\n",
                     m_tally.converted, m_tally.failed, m_tally.skipped, static_cast<long long>(m_tally.bytesIn),
                     static_cast<long long>(m_tally.bytesOut), seconds);
    }

    const SConversionCommand& m_command;
    const SOptions& m_options;
    STally m_tally;
    std::set<std::string> m_written;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

void AddOptions(CLI::App& app, const SConversionCommand& command, SOptions& options) {
    app.add_option("FILE", options.files, "The files to convert")->required();
    app.add_flag("-q,--quiet", options.quiet, "Say nothing but errors");
    app.add_flag("-k,--keep-going", options.keepGoing, "Go on with the next file after a failure");
    if (command.takesLevel) {
        CLI::Option* level =
            app.add_option(command.levelOption, options.level, command.levelSummary)->check(CLI::Range(1, 9));
        if (command.levelRequired) {
            level->required();
        } else {
            level->capture_default_str();
        }
    }
    if (command.takesJobs) {
        app.add_option("-j,--jobs", options.jobs,
                       "Threads to use, by default one for each core; the output is the same for any number")
            ->check(CLI::Range(1U, kMostJobs));
    }
    if (command.outputName) {
        CLI::Option* output = app.add_option("-o,--output", options.output, "Write to this path (one FILE only)");
        app.add_option("--output-dir", options.outputFolder, "Write into this folder instead of beside the input")
            ->excludes(output);
        app.add_flag("-f,--force", options.force, "Replace an existing output");
    }
    if (command.addOptions) {
        command.addOptions(app);
    }
}

}  // namespace

void AddConversionCommand(CLI::App& app, ChosenCommand& chosen, SConversionCommand command) {
    CLI::App* subcommand = app.add_subcommand(command.name, command.summary);
    subcommand->footer(command.examples);
    const auto options = std::make_shared<SOptions>();
    AddOptions(*subcommand, command, *options);
    const auto shared = std::make_shared<SConversionCommand>(std::move(command));
    subcommand->callback([&chosen, options, shared] {
        options->files = CommandFiles(options->files);
        if (!options->output.empty() && options->files.size() > 1) {
            throw CLI::ValidationError(
                "--output", "names one file, but there are " + std::to_string(options->files.size()) + " inputs");
        }
        chosen = [options, shared] { return CConversionRun(*shared, *options).Run(); };
    });
}

}  // namespace vantrel
