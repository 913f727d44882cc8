#include "console/conversion_command.h"

#include "console/conversion_run.h"
#include "console/option_set.h"

namespace vantrel {

EOutputManner MannerOf(bool force, bool sync) {
    if (sync) {
        return force ? EOutputManner::CommitReplaceFlushed : EOutputManner::CommitNewFlushed;
    }
    return force ? EOutputManner::CommitReplace : EOutputManner::CommitNew;
}

void CConversionCommand::Declare(COptionSet& options) {
    DeclareFiles(options);
    DeclareOutput(options);
}

void CConversionCommand::DeclareFiles(COptionSet& options) {
    options.AddFiles(m_options.files, "The files to convert");
    options.AddFlag("-q,--quiet", m_options.quiet, "Print errors only");
    options.AddFlag("-k,--keep-going", m_options.keepGoing, "Continue with the next file after a failure");
}

void CConversionCommand::DeclareOutput(COptionSet& options) {
    options.AddText("-o,--output", m_options.output, "Write to this path (one FILE only)");
    options.AddText("--output-dir", m_options.outputFolder,
                    "Write into this folder, which is made if missing, instead of beside the input");
    options.Exclude("--output-dir", "--output");
    options.AddFlag("-f,--force", m_options.force, "Replace an existing output");
    options.AddFlag("--sync", m_options.sync,
                    "Write new outputs to the disk before the end, as replaced ones always are");
}

void CConversionCommand::DeclareReport(COptionSet& options) {
    options.AddFlag("--dry-run", m_options.dryRun, "Write nothing, and report what would change");
    options.AddFlag("--json", m_options.json, "Report as JSON, one object in a line for each file");
}

std::string CConversionCommand::UsageProblem() const {
    if (m_options.output == "-") {
        return "--output: results cannot go to standard output, because files are renamed when they are complete";
    }
    if (m_options.output.empty() || m_options.files.size() == 1) {
        return {};
    }
    return "--output: names one file, but there are " + std::to_string(m_options.files.size()) + " inputs";
}

EExit CConversionCommand::Run() {
    return RunConversions(*this, m_options);
}

}  // namespace vantrel
