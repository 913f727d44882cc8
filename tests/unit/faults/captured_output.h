// What the console program prints, caught in the process of a test.
#pragma once

#include <cstdio>
#include <string>

namespace vantrel::test {

/// Leads standard output and error output of this process into one temporary file while it lives.
class CCapturedOutput {
public:
    CCapturedOutput();
    CCapturedOutput(const CCapturedOutput&) = delete;
    CCapturedOutput& operator=(const CCapturedOutput&) = delete;
    ~CCapturedOutput();

    /// What was printed so far.
    std::string Text() const;

private:
    std::FILE* m_file;
    int m_output;
    int m_errors;
};

}  // namespace vantrel::test
