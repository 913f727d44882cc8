// Formatting of the texts that a conversion shows. The texts are printf patterns.
#pragma once

#include <cstdint>
#include <string>

namespace vantrel {

/// Formats as printf does. The compiler checks the arguments against the pattern.
std::string Format(const char* pattern, ...) __attribute__((format(gnu_printf, 1, 2)));

/// For example "2048 bytes".
std::string BytesText(std::int64_t bytes);

/// For example "50%".
std::string PercentText(std::int64_t percent);

}  // namespace vantrel
