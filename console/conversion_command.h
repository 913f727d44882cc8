// One conversion as a command of the console program. What all of them share is here: the options, the names of
// outputs, the refusals that protect files, the exit status.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "files/output_file.h"
#include "operation/operation.h"

namespace vantrel {

/// Exit statuses of the program.
enum class EExit { Done = 0, Failed = 1, Usage = 2 };

/// One file of a command: what a conversion is run on.
struct SConversionJob {
    std::string input;
    std::string output;  ///< The main output; the input itself for a command that works in place.
    EOutputManner manner = EOutputManner::CommitNew;
    std::uint32_t jobs = 1;  ///< Threads to use, where the command can share its work.
};

/// A command to be. Texts are shown by --help.
struct SConversionCommand {
    std::string name;
    std::string summary;
    std::string examples;
    bool takesLevel = false;
    /// Whether the work can be shared by several threads.
    bool takesJobs = false;
    /// The option that sets what COperation::CompressionLevel answers, when the command takes it as a count of its own.
    std::string levelOption = "-l,--level";
    std::string levelSummary = "Compression level, 1 (fast) to 9 (small)";
    bool levelRequired = false;
    /// Name of the main output for an input's file name. Empty for a command that changes its input in place.
    std::function<std::string(const std::string& fileName)> outputName;
    /// Paths of further outputs for the path of the main one. May be empty.
    std::function<std::vector<std::string>(const std::string& output)> companions;
    /// Adds options of the command's own. May be empty.
    std::function<void(CLI::App& command)> addOptions;
    std::function<void(const SConversionJob& job, COperation& operation)> run;
};

/// What the chosen command will do once the command line is read; its result is the exit status.
using ChosenCommand = std::function<int()>;

/// Adds a conversion to the command line. When it is the one called for, `chosen` becomes its action.
void AddConversionCommand(CLI::App& app, ChosenCommand& chosen, SConversionCommand command);

}  // namespace vantrel
