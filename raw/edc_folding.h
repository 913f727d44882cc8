// The EDC by carry-less multiplication, an instruction of most x86-64 processors.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vantrel {

/// Whether this processor has the instruction.
bool CanFoldEdc();

inline constexpr std::size_t kFoldedSize = 16;
/// The minimum number of bytes.
inline constexpr std::size_t kShortestFolding = 64;

/// Returns 16 bytes with the same EDC as `bytes`, whose length is a multiple of 16.
std::array<std::uint8_t, kFoldedSize> FoldForEdc(std::span<const std::uint8_t> bytes);

}  // namespace vantrel
