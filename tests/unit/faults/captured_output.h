// Captures what the console program prints within the process of a test.
#pragma once

#include <cstdio>
#include <string>

namespace vantrel::test {

/// While it exists, redirects standard output and error output of this process to a temporary file.
class CCapturedOutput {
public:
    CCapturedOutput();
    CCapturedOutput(const CCapturedOutput&) = delete;
    CCapturedOutput& operator=(const CCapturedOutput&) = delete;
    ~CCapturedOutput();

    /// The output so far.
    std::string Text() const;

private:
    std::FILE* m_file;
    int m_output;
    int m_errors;
};

}  // namespace vantrel::test
