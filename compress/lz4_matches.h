// Finds earlier occurrences of a block's bytes, for the LZ4 encoder.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vantrel {

struct SLz4Match {
    std::uint32_t length = 0;  ///< 0: no match.
    std::uint32_t offset = 0;  ///< Distance to the earlier occurrence.
};

/// Links each position to the previous one whose next four bytes, its word, have the same hash value. Positions within
/// a run of one value all link to what is before the run. The object takes 384 KiB, so it belongs on the heap.
class CLz4Matches {
public:
    /// Starts a block of less than 4 GiB, which must stay valid until the next call.
    void Begin(std::span<const std::uint8_t> block);

    /// The longest match that an encoder may begin at `position`, as far as a limited number of candidates shows.
    /// Positions must ascend from call to call.
    SLz4Match Longest(std::size_t position);

private:
    static constexpr unsigned kMaxHashBits = 15;
    /// Positions whose links are kept: as far back as offsets reach, and as far ahead as words are looked up.
    static constexpr std::size_t kRing = 131072;

    /// A place in the chain of the word that is `ahead` bytes behind the position.
    struct SCandidate {
        std::size_t offset;
        std::size_t ahead;
    };

    std::uint32_t Word(std::size_t position) const;
    bool BeginsRun(std::size_t position) const;
    void LinkUpTo(std::size_t last);
    std::size_t NextOffset(const SCandidate& candidate) const;
    bool IsLeft(std::size_t offset);
    bool Improves(std::size_t offset);
    void SearchRuns();
    void SearchChain(std::size_t ahead);
    SCandidate Farthest(SCandidate candidate);
    std::size_t CommonLength(std::size_t earlier, std::size_t later, std::size_t limit) const;

    std::span<const std::uint8_t> m_block;
    std::size_t m_linked = 0;    ///< The first position without a link.
    std::size_t m_position = 0;  ///< What the search is for.
    std::size_t m_limit = 0;     ///< The longest match that may begin there.
    std::size_t m_runEnd = 0;    ///< The end of the last run that a position was in.
    SLz4Match m_best;            ///< The longest match there so far.
    int m_tries = 0;             ///< How many more candidates are looked at.
    unsigned m_hashBits = 0;
    std::array<std::uint32_t, 1U << kMaxHashBits> m_heads = {};  ///< By hash value: the last position plus 1, or 0.
    std::array<std::uint16_t, kRing> m_links = {};  ///< Distances to earlier positions; 0 if there is none.
};

}  // namespace vantrel
