#include "console/conversion_run.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>

#include "console/command_input.h"
#include "console/console_operation.h"
#include "console/edit_result.h"
#include "console/messages.h"
#include "files/leftovers.h"
#include "files/native_file.h"
#include "files/new_folders.h"
#include "files/path.h"
#include "files/refused.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// The results of one command.
struct STally {
    int converted = 0;
    int failed = 0;
    int skipped = 0;
    std::int64_t bytesIn = 0;
    std::int64_t bytesOut = 0;
};

/// "12345 bytes"
std::string LengthText(const std::string& path) {
    const std::int64_t size = FileSizeOf(path);
    return size >= 0 ? BytesText(size) : "length unknown";
}

class CConversionRun {
public:
    CConversionRun(const CConversionCommand& command, const SConversionOptions& options)
        : m_command(command), m_options(options) {}

    EExit Run() {
        if (!m_newFolders.Make(m_options.outputFolder) || (m_options.sync && !m_newFolders.Flush())) {
            PrintError(m_command.Name(), m_options.outputFolder, m_newFolders.Problem());
            return EExit::Failed;
        }
        for (const std::string& input : m_options.files) {
            if (m_tally.failed > 0 && !m_options.keepGoing) {
                ++m_tally.skipped;
            } else {
                RunOne(input);
            }
        }
        if (m_options.files.size() > 1 && !m_options.quiet && !m_options.json) {
            PrintSummary();
        }
        return m_tally.failed > 0 ? EExit::Failed : EExit::Done;
    }

private:
    void RunOne(const std::string& input) {
        SConversionJob job;
        job.input = input;
        try {
            job.output = OutputOf(input);
            RemoveLeftovers(FolderOf(ResolveLink(job.output)));
            job.manner = MannerOf(m_options.force, m_options.sync);
            SCommandInput read = InputOf(input);
            for (const std::string& further : m_command.FurtherInputs(input)) {
                if (FileKindOf(further) != EFileKind::Missing) {
                    read.files.push_back(further);
                }
            }
            RefuseOverwriting(job, read);
            const std::string warning = Convert(job, read.bytes);
            if (warning.empty()) {
                ++m_tally.converted;
            } else {
                ++m_tally.failed;  // a report as JSON has the warning among its notices
                PrintError(m_command.Name(), input, warning);
            }
        } catch (const CRefused& refusal) {
            PrintFailure(input, refusal.what());
        } catch (const CConversionFailed& failure) {
            PrintFailure(input, FailureText(failure));
        }
    }

    /// Returns what the output lacks of the input; empty if nothing.
    std::string Convert(const SConversionJob& job, std::int64_t bytesIn) {
        CProgressLine progress(!m_options.quiet && CanDrawProgress(), FileNameOf(job.input), bytesIn);
        CConsoleOperation operation(progress);
        m_command.Convert(job, operation);
        progress.Clear();
        m_tally.bytesIn += bytesIn;
        m_tally.bytesOut += std::max<std::int64_t>(FileSizeOf(job.output), 0);
        m_written.insert(job.output);
        if (!m_options.quiet && !m_options.json) {
            PrintResult(job, operation);
        }
        return operation.Warning();
    }

    std::string OutputOf(const std::string& input) const {
        const std::string name = m_command.OutputName(FileNameOf(input));
        if (name.empty()) {
            return input;
        }
        if (!m_options.output.empty()) {
            return m_options.output;
        }
        const std::string& folder = m_options.outputFolder;
        return (folder.empty() ? FolderOf(input) : WithSeparator(folder)) + name;
    }

    bool IsInPlace(const SConversionJob& job) const { return m_command.OutputName(FileNameOf(job.input)).empty(); }

    void RefuseOverwriting(const SConversionJob& job, const SCommandInput& read) const {
        if (IsInPlace(job) || m_options.dryRun) {
            return;
        }
        std::vector<std::string> outputs = m_command.Companions(job.output);
        outputs.insert(outputs.begin(), job.output);
        for (const std::string& output : outputs) {
            const EFileKind kind = FileKindOf(output);
            if (kind == EFileKind::Missing) {
                continue;
            }
            if (!read.problem.empty()) {
                throw CRefused(read.problem);
            }
            for (const std::string& input : read.files) {
                if (IsSameFile(input, output)) {
                    throw CRefused(input + ": the output would be " +
                                   (input == job.input ? "the input itself" : "a file of the input"));
                }
            }
            if (std::find(m_options.files.begin(), m_options.files.end(), output) != m_options.files.end()) {
                throw CRefused(job.input + ": the output would be " + output + ", another input");
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

    void PrintFailure(const std::string& input, const std::string& text) {
        ++m_tally.failed;
        if (m_options.json) {
            PrintResults(FailureJson(input, text));
        }
        PrintError(m_command.Name(), input, text);
    }

    void PrintResult(const SConversionJob& job, const CConsoleOperation& operation) const {
        for (const std::string& notice : operation.Notices()) {
            PrintResults(Shown(OneLine(notice), EStream::Output) + '\n');
        }
        if (!operation.DoneText().empty()) {
            const std::string result =
                job.input + " -> " + job.output + ": " + operation.DoneText() + " (" + LengthText(job.output) + ")";
            PrintResults(Shown(result, EStream::Output) + '\n');
        }
    }

    void PrintSummary() const {
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
        std::fprintf(stderr, "%d converted, %d failed, %d skipped; %lld bytes in, %lld bytes out, %.1f seconds\n",
                     m_tally.converted, m_tally.failed, m_tally.skipped, static_cast<long long>(m_tally.bytesIn),
                     static_cast<long long>(m_tally.bytesOut), seconds);
    }

    const CConversionCommand& m_command;
    const SConversionOptions& m_options;
    STally m_tally;
    CNewFolders m_newFolders;
    std::set<std::string> m_written;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

}  // namespace

EExit RunConversions(const CConversionCommand& command, const SConversionOptions& options) {
    return CConversionRun(command, options).Run();
}

}  // namespace vantrel
