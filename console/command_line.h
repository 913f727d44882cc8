// The command line of the console program as a whole.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace vantrel {

/// What a command line asks for.
struct SCommandLine {
    /// The exit status when nothing is to be done: help or the version was asked for, or the usage is wrong. What there
    /// is to say has been written then.
    std::optional<int> status;
    /// Otherwise: does what is asked for and gives the exit status.
    std::function<int()> action;
};

/// Reads the words after the program's name (UTF-8) without doing anything yet.
SCommandLine ReadCommandLine(std::vector<std::string> words, std::ostream& out, std::ostream& errors);

/// Reads the words, does what they ask for and gives the exit status: 0 done, 1 a conversion failed, 2 wrong usage,
/// 128 + n ended by signal n.
int RunCommandLine(std::vector<std::string> words);

}  // namespace vantrel
