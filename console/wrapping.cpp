#include "console/wrapping.h"

#include <algorithm>
#include <sstream>

namespace vantrel {

namespace {

constexpr std::size_t kLongestLine = 80;

std::size_t IndentOf(const std::string& line, std::size_t column) {
    const bool hasColumns =
        line.size() > column && line.front() == ' ' && line[column] != ' ' && line.compare(column - 2, 2, "  ") == 0;
    return hasColumns ? column : std::min(line.find_first_not_of(' '), line.size());
}

}  // namespace

std::string Wrapped(const std::string& text, std::size_t column) {
    std::string wrapped;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t indent = IndentOf(line, column);
        while (line.size() > kLongestLine) {
            const std::size_t blank = line.rfind(' ', kLongestLine);
            if (blank == std::string::npos || blank <= indent) {
                break;
            }
            wrapped += line.substr(0, blank) + '\n';
            line = std::string(indent, ' ') + line.substr(blank + 1);
        }
        wrapped += line + '\n';
    }
    return wrapped;
}

}  // namespace vantrel
