#include "app/folder_pattern.h"

namespace vantrel {
namespace {

bool IsOneOf(char letter, std::string_view letters) {
    return letters.find(letter) != std::string_view::npos;
}

/// Length of the conversion behind a '%': flags, width, precision, size and letter. 0 if `text` does not start with
/// one.
std::size_t ConversionLength(std::string_view text) {
    std::size_t length = 0;
    const auto skip = [&](std::string_view letters) {
        while (length < text.size() && IsOneOf(text[length], letters)) {
            ++length;
        }
    };
    skip("-+ #0");
    skip("*0123456789");
    skip(".");
    skip("*0123456789");
    skip("hlLqjztwFNI");
    const bool complete = length < text.size() && IsOneOf(text[length], "diouxXeEfgGaAcCsSpn");
    return complete ? length + 1 : 0;
}

}  // namespace

std::string ExpandAsPattern(std::string_view folder) {
    std::string expanded;
    for (std::size_t i = 0; i < folder.size(); ++i) {
        if (folder[i] != '%') {
            expanded += folder[i];
        } else if (folder.substr(i + 1).starts_with('%')) {
            expanded += '%';
            ++i;
        } else {
            i += ConversionLength(folder.substr(i + 1));
        }
    }
    return expanded;
}

}  // namespace vantrel
