// The console program, run to make the files with which the window's are compared.
#pragma once

#include <string>
#include <vector>

namespace vantrel::test {

/// Runs vantrel.exe, which stands beside the test program, and gives its exit status.
int RunConsoleProgram(const std::vector<std::string>& words);

}  // namespace vantrel::test
