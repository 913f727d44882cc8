// Formatting of the texts that a conversion shows, by printf patterns, because the texts are kept as patterns.
#pragma once

#include <cstdint>
#include <string>

namespace vantrel {

/// The text that printf would write for `pattern`. The compiler checks the arguments against the pattern.
std::string Format(const char* pattern, ...) __attribute__((format(gnu_printf, 1, 2)));

/// "%s bytes" of a byte count.
std::string BytesText(std::int64_t bytes);

/// "%d%%" of a percentage.
std::string PercentText(std::int64_t percent);

}  // namespace vantrel
