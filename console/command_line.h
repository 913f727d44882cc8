// The command line of the console program as a whole.
#pragma once

#include <string>
#include <vector>

namespace vantrel {

/// Reads the words after the program's name (UTF-8), does what they ask for and gives the exit status: 0 done, 1 a
/// conversion failed, 2 wrong usage, 128 + n ended by signal n.
int RunCommandLine(std::vector<std::string> words);

}  // namespace vantrel
