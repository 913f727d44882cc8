#include "operation/text.h"

#include <cstdarg>
#include <cstdio>

namespace vantrel {

std::string Format(const char* pattern, ...) {  // NOLINT(cert-dcl50-cpp)
    va_list arguments;
    va_start(arguments, pattern);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, pattern, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0U, '\0');
    std::vsnprintf(text.data(), text.size() + 1, pattern, again);
    va_end(again);
    return text;
}

std::string BytesText(std::int64_t bytes) {
    return std::to_string(bytes) + " bytes";
}

std::string PercentText(std::int64_t percent) {
    return std::to_string(percent) + "%";
}

}  // namespace vantrel
