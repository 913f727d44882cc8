// The date in a directory record.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace vantrel {

/// A recording date and time (ECMA-119 9.1.5) in seconds since 1970 (UTC); no value if it is not specified or no date.
std::optional<std::int64_t> SecondsOf(std::span<const std::uint8_t, 7> recordingDate);

}  // namespace vantrel
