// The EDC with the carry-less multiplication that most x86-64 processors have.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vantrel {

/// Whether this processor can do it.
bool CanFoldEdc();

inline constexpr std::size_t kFoldedSize = 16;
/// Shorter ones cannot be folded.
inline constexpr std::size_t kShortestFolding = 64;

/// 16 bytes that have the same EDC as `bytes`, whose length is a multiple of 16.
std::array<std::uint8_t, kFoldedSize> FoldForEdc(std::span<const std::uint8_t> bytes);

}  // namespace vantrel
