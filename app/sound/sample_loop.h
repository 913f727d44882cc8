// The endless repetition of a sound: what the next buffer of the player holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vantrel {

/// The size in bytes of each of the player's buffers.
inline constexpr std::size_t kWaveBufferSize = 8000;

/// The bytes of a buffer that hold whole samples of this size; the device plays no broken ones. 0 for a sample size
/// of 0 or one that is larger than the buffer.
std::size_t UsableBufferSize(std::size_t blockAlign);

/// Fills the buffer with what follows the read position, beginning again at the start of the samples whenever their
/// end is reached, and moves the read position on. Nothing happens when there are no samples.
void FillFromLoop(std::span<const std::uint8_t> samples, std::size_t& readPosition, std::span<std::uint8_t> buffer);

}  // namespace vantrel
