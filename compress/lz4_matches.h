// Finds earlier occurrences of bytes in a block, for the LZ4 encoder.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vantrel {

struct SLz4Match {
    std::uint32_t length = 0;  ///< 0: no match.
    std::uint32_t offset = 0;  ///< How many bytes back the match begins.
};

/// Chains of positions whose next four bytes have the same hash value. Takes 256 KiB, so it belongs on the heap.
class CLz4Matches {
public:
    /// Starts a block of less than 4 GiB, which must stay valid until the next call.
    void Begin(std::span<const std::uint8_t> block);

    /// The longest match that an encoder may begin at `position`, among a limited number of candidates, the nearest
    /// first. Positions must ascend from call to call.
    SLz4Match Longest(std::size_t position);

private:
    static constexpr std::size_t kRing = 131072;
    static constexpr unsigned kMaxHashBits = 15;

    std::uint32_t Word(std::size_t position) const;
    bool IsRun(std::size_t position) const;
    void LinkUpTo(std::size_t last);
    std::size_t NextOffset(std::size_t offset, std::size_t ahead) const;
    bool Improves(std::size_t offset);
    void SearchRuns();
    void SearchChain(std::size_t ahead);
    std::size_t CommonLength(std::size_t earlier, std::size_t position, std::size_t limit) const;

    std::span<const std::uint8_t> m_block;
    std::size_t m_linked = 0;
    std::size_t m_position = 0;
    std::size_t m_runEnd = 0;
    std::size_t m_limit = 0;
    int m_tries = 0;
    SLz4Match m_best;
    unsigned m_hashBits = 0;
    std::array<std::uint32_t, 1U << kMaxHashBits> m_heads = {};  ///< By hash value: the latest position plus 1, or 0.
    std::array<std::uint16_t, kRing> m_back = {};  ///< By position: distance to the previous one in its chain, or 0.
};

}  // namespace vantrel
