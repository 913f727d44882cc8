// The numbers of the LZ4 block format, for decoder and encoder.
//
// A block is a series of sequences. Each one begins with a token, which holds two lengths in four bits each: that of
// the literals, and that of the match less 4. A length of 15 is continued: bytes are added to it, up to and including
// the first one below 255. The token is followed by the continued length of the literals, the literals, the match's
// offset (16 bits, little-endian) and the continued length of the match. The last sequence ends with its literals.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantrel {

/// The length in a token that is continued.
inline constexpr std::size_t kLz4LongLength = 15;
/// The byte of a continued length that another one follows.
inline constexpr std::size_t kLz4LengthStep = 255;
/// The shortest match.
inline constexpr std::size_t kLz4MinMatch = 4;
/// The largest distance of a match.
inline constexpr std::size_t kLz4MaxOffset = 65535;
inline constexpr std::size_t kLz4OffsetSize = 2;
/// Encoders end a block with at least this many literals, because fast decoders rely on it.
inline constexpr std::size_t kLz4LastLiterals = 5;
/// Encoders begin every match at least this many bytes before the end of the block, for the same reason.
inline constexpr std::size_t kLz4MatchMargin = 12;

}  // namespace vantrel
