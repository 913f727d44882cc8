#include "app/converter/quoted_arguments.h"

#include <string_view>

namespace vantrel {

namespace {

/// Backslashes are literal except before a quote.
std::string Quoted(std::string_view word) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char character : word) {
        if (character == '"') {
            quoted.append(backslashes + 1, '\\');
        }
        backslashes = character == '\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, '\\');
    return quoted + '"';
}

}  // namespace

std::string QuotedCommandLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += line.empty() ? "" : " ";
        line += Quoted(word);
    }
    return line;
}

}  // namespace vantrel
