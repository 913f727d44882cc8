#include "console/messages.h"

#include <cstdio>

namespace vantrel {

std::string OneLine(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

std::string FailureText(const CConversionFailed& failure) {
    const std::string text = OneLine(failure.what());
    return failure.Cause().empty() ? text : text + " (" + failure.Cause() + ")";
}

void PrintError(const std::string& command, const std::string& file, const std::string& text) {
    const bool namesFile = text.starts_with(file + ": ") || text.starts_with(file + " ");
    const std::string prefix = namesFile ? std::string() : file + ": ";
    std::fprintf(stderr, "vantrel %s: %s%s\n", command.c_str(), prefix.c_str(), text.c_str());
}

}  // namespace vantrel
