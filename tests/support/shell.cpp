#include "tests/support/shell.h"

#include <sys/wait.h>

#include <cstdio>

namespace vantrel::test {

namespace {

/// The word in quotes for a POSIX shell.
std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

}  // namespace

int RunProgram(const std::vector<std::string>& words, std::string* output) {
    std::string line;
    for (const std::string& word : words) {
        line += Quoted(word) + " ";
    }
    std::FILE* pipe = ::popen((line + "2>&1").c_str(), "r");
    if (pipe == nullptr) {
        return -1;
    }
    char buffer[4096];
    for (std::size_t count = 0; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        if (output != nullptr) {
            output->append(buffer, count);
        }
    }
    const int status = ::pclose(pipe);
    return status >= 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace vantrel::test
