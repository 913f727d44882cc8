// The numbers of the LZ4 block format, for decoder and encoder.
//
// A block is a series of sequences. Each one begins with a token, which holds two lengths in four bits each: that of
// the literals, and that of the match less 4. A length of 15 goes on in bytes that follow, up to and including the
// first one that is not 255. After the token come the literals' length, the literals, the match's offset (16 bits,
// little-endian) and its length. The last sequence ends with its literals.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantrel {

/// The largest length that a token holds; its bytes follow.
inline constexpr std::size_t kLz4LongLength = 15;
/// The value of a byte that continues a length and is followed by another one.
inline constexpr std::size_t kLz4LengthStep = 255;
/// A token's match length 0.
inline constexpr std::size_t kLz4MinMatch = 4;
/// The largest distance of a match.
inline constexpr std::size_t kLz4MaxOffset = 65535;
inline constexpr std::size_t kLz4OffsetSize = 2;
/// Encoders end a block with at least so many literals, ...
inline constexpr std::size_t kLz4LastLiterals = 5;
/// ... and begin the last match at least so many bytes before its end. Fast decoders rely on both.
inline constexpr std::size_t kLz4MatchMargin = 12;

}  // namespace vantrel
