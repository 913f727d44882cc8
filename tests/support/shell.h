// Running third-party programs in a test.
#pragma once

#include <string>
#include <vector>

namespace vantrel::test {

/// Runs a program with literal arguments and returns its exit status; −1 if it cannot be started or is ended by a
/// signal. Appends its standard output and error output to `output` if that is not null.
int RunProgram(const std::vector<std::string>& words, std::string* output = nullptr);

}  // namespace vantrel::test
