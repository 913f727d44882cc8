#include "tests/unit/faults/captured_output.h"

#include <unistd.h>

namespace vantrel::test {

CCapturedOutput::CCapturedOutput()
    : m_file(std::tmpfile()), m_output(::dup(STDOUT_FILENO)), m_errors(::dup(STDERR_FILENO)) {
    std::fflush(nullptr);
    ::dup2(::fileno(m_file), STDOUT_FILENO);
    ::dup2(::fileno(m_file), STDERR_FILENO);
}

CCapturedOutput::~CCapturedOutput() {
    std::fflush(nullptr);
    ::dup2(m_output, STDOUT_FILENO);
    ::dup2(m_errors, STDERR_FILENO);
    ::close(m_output);
    ::close(m_errors);
    std::fclose(m_file);
}

std::string CCapturedOutput::Text() const {
    std::fflush(nullptr);
    // Both outputs share the file position and must continue at the end.
    std::rewind(m_file);
    std::string text;
    char buffer[4096];
    for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, m_file)) > 0;) {
        text.append(buffer, count);
    }
    std::fseek(m_file, 0, SEEK_END);
    return text;
}

}  // namespace vantrel::test
