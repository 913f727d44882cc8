// The base of every command that converts files, with the options that all of them have.
#pragma once

#include <string>
#include <vector>

#include "console/command.h"
#include "files/output_file.h"
#include "operation/operation.h"

namespace vantrel {

/// One file to convert.
struct SConversionJob {
    std::string input;
    std::string output;  ///< The main output; the input itself for a command that works in place.
    EOutputManner manner = EOutputManner::CommitNew;
};

struct SConversionOptions {
    std::vector<std::string> files;
    std::string output;
    std::string outputFolder;
    bool force = false;
    bool sync = false;
    bool quiet = false;
    bool keepGoing = false;
    bool dryRun = false;
    bool json = false;  ///< The command prints the results of its conversions itself.
};

/// How outputs are written with --force and --sync.
EOutputManner MannerOf(bool force, bool sync);

class CConversionCommand : public CCommand {
public:
    using CCommand::CCommand;

    /// Declares FILE, --quiet, --keep-going and the options of DeclareOutput. Commands with options of their own
    /// override it.
    void Declare(COptionSet& options) override;
    std::string UsageProblem() const override;
    EExit Run() override;

    /// The name of the main output for the name of an input; empty if the command changes its input in place.
    virtual std::string OutputName(const std::string& /*inputName*/) const { return {}; }
    /// Paths of the files that the command reads for an input besides those that the content of the input names.
    virtual std::vector<std::string> FurtherInputs(const std::string& /*input*/) const { return {}; }
    /// Paths of the further outputs for the path of the main one.
    virtual std::vector<std::string> Companions(const std::string& /*output*/) const { return {}; }
    virtual void Convert(const SConversionJob& job, COperation& operation) const = 0;

protected:
    void DeclareFiles(COptionSet& options);
    /// --output, --output-dir and --force.
    void DeclareOutput(COptionSet& options);
    /// --dry-run and --json.
    void DeclareReport(COptionSet& options);
    const std::vector<std::string>& Files() const { return m_options.files; }
    bool IsDryRun() const { return m_options.dryRun; }
    bool ReportsJson() const { return m_options.json; }
    /// The value of --output.
    const std::string& Output() const { return m_options.output; }

private:
    SConversionOptions m_options;
};

}  // namespace vantrel
