// Names of files as UDF records them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace vantrel {

/// Converts a name in OSTA compressed Unicode (OSTA UDF 2.1.1) to UTF-8: 8 or 16 bits per character, as its first byte
/// says. Control characters stay as they are. Nullopt if the name is empty or no such text.
std::optional<std::string> NameOfOsta(std::span<const std::uint8_t> recorded);

}  // namespace vantrel
