// Runs the console program, whose outputs are compared with those of the window.
#pragma once

#include <string>
#include <vector>

namespace vantrel::test {

/// Runs vantrel.exe in the folder of the test program and returns its exit status.
int RunConsoleProgram(const std::vector<std::string>& words);

}  // namespace vantrel::test
