#include "compress/lz4_matches.h"

#include <algorithm>
#include <bit>

#include "compress/lz4_format.h"
#include "files/byte_order.h"

namespace vantrel {

namespace {

constexpr std::size_t kWordSize = 4;
constexpr std::size_t kLookahead = 65536;
/// An offset that ends a chain.
constexpr std::size_t kNowhere = kLz4MaxOffset + 1;
constexpr int kMaxTries = 256;
/// A word that occurs again within so many bytes is part of a repetition, and its chain is no short one.
constexpr std::size_t kRepetition = 16;

}  // namespace

void CLz4Matches::Begin(std::span<const std::uint8_t> block) {
    m_block = block;
    m_linked = 0;
    m_position = 0;
    m_runEnd = 0;
    m_best = {};
    // A small block uses few heads, because clearing all of them would take longer than encoding it.
    m_hashBits = std::min(static_cast<unsigned>(std::bit_width(block.size())), kMaxHashBits);
    std::fill_n(m_heads.begin(), std::size_t{1} << m_hashBits, 0U);
}

SLz4Match CLz4Matches::Longest(std::size_t position) {
    // The match at the position before goes on at this one.
    const bool continues = position == m_position + 1 && m_best.length > kLz4MinMatch;
    m_best = continues ? SLz4Match{m_best.length - 1, m_best.offset} : SLz4Match{};
    m_position = position;
    if (m_block.size() - position < kLz4MatchMargin) {
        return m_best = {};
    }
    m_limit = m_block.size() - kLz4LastLiterals - position;
    m_tries = kMaxTries;
    LinkUpTo(std::min(position + kLookahead, m_block.size() - kWordSize));
    if (BeginsRun(position)) {
        SearchRuns();
    } else {
        SearchChain(0);
    }
    return m_best;
}

std::uint32_t CLz4Matches::Word(std::size_t position) const {
    return LoadLe32(m_block.subspan(position).first<kWordSize>());
}

/// Whether the bytes of the word are equal.
bool CLz4Matches::BeginsRun(std::size_t position) const {
    return Word(position) == m_block[position] * 0x01010101U;
}

void CLz4Matches::LinkUpTo(std::size_t last) {
    constexpr std::uint32_t kMultiplier = 0x9E3779B1;  // a prime near 2^32 divided by the golden ratio
    for (; m_linked <= last; ++m_linked) {
        std::uint32_t& head = m_heads[Word(m_linked) * kMultiplier >> (32 - m_hashBits)];
        std::size_t link = head == 0 ? 0 : m_linked + 1 - head;
        if (link == 1 && BeginsRun(m_linked) && m_block[m_linked - 1] == m_block[m_linked]) {
            const std::size_t beforeRun = m_links[(m_linked - 1) % kRing];
            link = beforeRun == 0 ? 0 : beforeRun + 1;
        }
        m_links[m_linked % kRing] = static_cast<std::uint16_t>(link <= kLz4MaxOffset ? link : 0);
        head = static_cast<std::uint32_t>(m_linked + 1);
    }
}

std::size_t CLz4Matches::NextOffset(const SCandidate& candidate) const {
    const std::size_t link = m_links[(m_position + candidate.ahead - candidate.offset) % kRing];
    return link == 0 ? kNowhere : candidate.offset + link;
}

/// Counts the tries.
bool CLz4Matches::IsLeft(std::size_t offset) {
    return offset <= std::min(m_position, kLz4MaxOffset) && m_tries-- > 0;
}

/// Makes the match at an offset the best one, if it is longer.
bool CLz4Matches::Improves(std::size_t offset) {
    const std::size_t candidate = m_position - offset;
    // Most candidates differ in the byte behind the best match, or just before it.
    const std::size_t last = std::max<std::size_t>(m_best.length + 1, kWordSize) - kWordSize;
    if (Word(candidate + last) != Word(m_position + last)) {
        return false;
    }
    const std::size_t length = CommonLength(candidate, m_position, m_limit);
    if (length < kLz4MinMatch || length <= m_best.length) {
        return false;
    }
    m_best = {static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(offset)};
    return true;
}

/// The search within a run: in an earlier run of the same value, only the place counts from which the rest is as long
/// as here, or else its beginning.
void CLz4Matches::SearchRuns() {
    const std::uint8_t value = m_block[m_position];
    if (m_runEnd <= m_position) {
        m_runEnd = m_position + 1 + CommonLength(m_position, m_position + 1, m_limit - 1);
    }
    const std::size_t run = m_runEnd - m_position;
    if (run > m_best.length && m_position > 0 && m_block[m_position - 1] == value) {
        m_best = {static_cast<std::uint32_t>(run), 1};
    }
    for (SCandidate candidate = {NextOffset({0, 0}), 0}; m_best.length < run && IsLeft(candidate.offset);
         candidate.offset = NextOffset(candidate)) {
        std::size_t begin = m_position - candidate.offset;
        const std::size_t end = begin + kWordSize;
        while (begin > 0 && m_block[begin - 1] == value && end - begin < run && m_position - begin < kLz4MaxOffset) {
            --begin;
        }
        Improves(m_position - begin);
    }
    if (run < m_limit && run <= kLookahead) {
        SearchChain(run + 1 - kWordSize);
    }
}

void CLz4Matches::SearchChain(std::size_t ahead) {
    SCandidate candidate = Farthest({NextOffset({0, ahead}), ahead});
    while (m_best.length < m_limit && IsLeft(candidate.offset)) {
        const bool improves = Improves(candidate.offset);
        candidate.offset = NextOffset(candidate);
        if (improves) {
            candidate = Farthest(candidate);
        }
    }
}

/// Longer matches are in the chain of every word up to the end of the best match. So the search can go on in the chain
/// of the last such word, if that leads farther back at once.
CLz4Matches::SCandidate CLz4Matches::Farthest(SCandidate candidate) {
    const std::size_t last = std::clamp<std::size_t>(m_best.length + 1, kWordSize, kLookahead) - kWordSize;
    if (last <= candidate.ahead || BeginsRun(m_position + last)) {
        return candidate;
    }
    SCandidate other = {NextOffset({0, last}), last};
    if (other.offset <= kRepetition) {
        return candidate;
    }
    while (other.offset < candidate.offset && m_tries-- > 0) {
        other.offset = NextOffset(other);
    }
    return other.offset < candidate.offset ? candidate : other;
}

std::size_t CLz4Matches::CommonLength(std::size_t earlier, std::size_t later, std::size_t limit) const {
    const std::span<const std::uint8_t> first = m_block.subspan(earlier, limit);
    const std::span<const std::uint8_t> second = m_block.subspan(later, limit);
    std::size_t length = 0;
    for (; length + 8 <= limit; length += 8) {
        const std::uint64_t difference =
            LoadLe64(first.subspan(length).first<8>()) ^ LoadLe64(second.subspan(length).first<8>());
        if (difference != 0) {
            return length + static_cast<std::size_t>(std::countr_zero(difference)) / 8;
        }
    }
    while (length < limit && first[length] == second[length]) {
        ++length;
    }
    return length;
}

}  // namespace vantrel
