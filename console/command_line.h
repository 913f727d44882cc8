// The command line of the console program as a whole.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "console/command.h"

namespace vantrel {

/// What a command line asks for; exactly one of the two is present.
struct SCommandLine {
    /// The exit status if there is nothing to run: help or the version was asked for, or the usage is wrong. All
    /// messages have been written then.
    std::optional<EExit> status;
    /// Runs the command and returns the exit status.
    std::function<EExit()> action;
};

/// Reads the words after the program's name (UTF-8), and runs nothing yet.
SCommandLine ReadCommandLine(std::vector<std::string> words, std::ostream& out, std::ostream& errors);

/// Reads the words, runs their command and returns the exit status: 0 done, 1 failed, 2 wrong usage, 128 + n ended by
/// signal n.
int RunCommandLine(std::vector<std::string> words);

}  // namespace vantrel
