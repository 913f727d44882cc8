// Lower case of ASCII letters, independent of the locale, for comparing file names.
#pragma once

#include <algorithm>
#include <string>

namespace vantrel {

constexpr char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char UpperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// The text with its ASCII letters in lower case.
inline std::string LowerAscii(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return LowerAscii(c); });
    return text;
}

}  // namespace vantrel
