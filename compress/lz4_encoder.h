// Compresses blocks in the LZ4 format, with the smallest output that the matches found allow.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "compress/lz4_matches.h"

namespace vantrel {

/// Bytes that an encoder takes, for blocks of any size: it belongs on the heap.
inline constexpr std::uint32_t kLz4EncoderMemory = 577U << 10U;

/// Compresses any number of blocks, each independently: the output depends on the input alone.
class CLz4Encoder {
public:
    /// Compresses a block of less than 2 GiB. Returns the number of bytes written, or 0 if they do not fit `out`. The
    /// content of `out` is unspecified behind them and after a failure.
    std::size_t Encode(std::span<const std::uint8_t> in, std::span<std::uint8_t> out);

private:
    /// Positions for which sequences are chosen at a time.
    static constexpr std::size_t kSegment = 16384;

    void ChooseMatches(std::size_t begin, std::size_t end);

    CLz4Matches m_finder;
    std::array<SLz4Match, kSegment> m_matches = {};       ///< The longest match at each position, then the chosen one.
    std::array<std::int32_t, kSegment + 1> m_costs = {};  ///< Bytes that the segment takes from a position on.
};

}  // namespace vantrel
