// Expands LZ4 blocks, as ZSO files and version 2 of CSO files hold them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace vantrel {

/// Expands a block and returns the number of bytes written. Ends as soon as `out` is full, because padding may follow a
/// block. Returns nothing for a damaged block: one that ends within a sequence, refers to bytes before its beginning,
/// or has a sequence that goes beyond the end of `out`. Never accesses bytes outside the spans; the content of `out` is
/// unspecified behind the written bytes and after a failure.
std::optional<std::size_t> DecodeLz4(std::span<const std::uint8_t> block, std::span<std::uint8_t> out);

}  // namespace vantrel
