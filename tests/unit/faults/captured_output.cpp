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
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0;
         (count = ::pread(::fileno(m_file), buffer, sizeof buffer, static_cast<off_t>(text.size()))) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

}  // namespace vantrel::test
