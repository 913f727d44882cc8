// The endless repetition of a sound: the contents of the player's next buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vantrel {

/// Bytes of each of the player's buffers.
inline constexpr std::size_t kWaveBufferSize = 8000;

/// The largest number of bytes of a buffer that is a multiple of the sample size, because a device plays whole samples
/// only. 0 if the sample size is 0 or larger than the buffer.
std::size_t UsableBufferSize(std::size_t blockAlign);

/// Fills the buffer with the samples from the read position on, starts again at the first sample whenever the end is
/// reached, and advances the read position. Does nothing if there are no samples.
void FillFromLoop(std::span<const std::uint8_t> samples, std::size_t& readPosition, std::span<std::uint8_t> buffer);

}  // namespace vantrel
