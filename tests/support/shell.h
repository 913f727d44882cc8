// Running other people's programs from a test.
#pragma once

#include <string>
#include <vector>

namespace vantrel::test {

/// Runs a program with its arguments, each taken literally, and gives its exit status; −1 when it could not run or was
/// ended by a signal. Its standard output and error output are appended to `output` when that is given.
int RunProgram(const std::vector<std::string>& words, std::string* output = nullptr);

}  // namespace vantrel::test
