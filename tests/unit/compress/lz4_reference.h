// Debian's liblz4 as the second implementation of LZ4 blocks.
#pragma once

#include <functional>
#include <span>

#include "tests/support/test_folder.h"

namespace vantrel::test {

inline constexpr int kLz4ReferenceLevel = 9;
inline constexpr int kMostLz4ReferenceLevel = 12;

/// Level 0 is the library's fast encoder.
Bytes ReferenceLz4Block(std::span<const std::uint8_t> in, int level);

/// Fails the test if the block does not expand to `size` bytes.
Bytes ReferenceDecodedLz4(const Bytes& block, std::size_t size);

/// Calls with blocks of many sizes from 1 MiB of content.
void ForEachLz4Block(const Bytes& content, const std::function<void(std::span<const std::uint8_t>)>& compare);

}  // namespace vantrel::test
