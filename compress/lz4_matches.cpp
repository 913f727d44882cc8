#include "compress/lz4_matches.h"

#include <algorithm>
#include <bit>

#include "compress/lz4_format.h"
#include "files/byte_order.h"

namespace vantrel {

namespace {

/// The number of candidates that are compared at a position.
constexpr int kMaxCandidates = 256;
/// A match that is at least so long is not compared with others. The positions behind it inherit the rest of it, until
/// that is shorter.
constexpr std::size_t kLongEnough = 64;
constexpr int kFewCandidates = 16;

constexpr std::size_t kWordSize = 4;
constexpr std::size_t kLookahead = 65536;
constexpr std::size_t kNowhere = kLz4MaxOffset + 1;

}  // namespace

void CLz4Matches::Begin(std::span<const std::uint8_t> block) {
    m_block = block;
    m_position = 0;
    m_linked = 0; m_runEnd = 0;
    m_best = {};
    // A small block uses few heads, because clearing all of them would take longer than encoding it.
    m_hashBits = std::min(static_cast<unsigned>(std::bit_width(block.size())), kMaxHashBits);
    std::fill_n(m_heads.begin(), std::size_t{1} << m_hashBits, 0U);
}

SLz4Match CLz4Matches::Longest(std::size_t position) {
    const bool inherits = position == m_position + 1 && m_best.length > kLz4MinMatch;
    m_best = inherits ? SLz4Match{m_best.length - 1, m_best.offset} : SLz4Match{};
    m_position = position;
    if (m_block.size() - position <= kLz4MatchMargin) {
        return m_best = {};
    }
    m_limit = m_block.size() - kLz4LastLiterals - position;
    m_tries = m_best.length < kLongEnough ? kMaxCandidates : kFewCandidates;
    LinkUpTo(std::min(position + kLookahead, m_block.size() - kWordSize));
    if (IsRun(position)) {
        SearchRuns();
    } else {
        SearchChain(0);
    }
    return m_best;
}

std::uint32_t CLz4Matches::Word(std::size_t position) const {
    return LoadLe32(m_block.subspan(position).first<kWordSize>());
}

bool CLz4Matches::IsRun(std::size_t position) const {
    return Word(position) == m_block[position] * 0x01010101U;
}

/// Adds the positions to `last` to their chains. Positions within a run of one value are linked to what is before the run.
void CLz4Matches::LinkUpTo(std::size_t last) {
    constexpr std::uint32_t kMultiplier = 0x9E3779B1;  // a prime near 2^32 divided by the golden ratio
    for (; m_linked <= last; ++m_linked) {
        std::uint32_t& head = m_heads[Word(m_linked) * kMultiplier >> (32 - m_hashBits)];
        std::size_t back = head == 0 ? 0 : m_linked + 1 - head;
        if (back == 1 && Word(m_linked) == Word(m_linked - 1)) {
            const std::size_t before = m_back[(m_linked - 1) % kRing];
            back = before == 0 ? 0 : before + 1;
        }
        m_back[m_linked % kRing] = static_cast<std::uint16_t>(back <= kLz4MaxOffset ? back : 0);
        head = static_cast<std::uint32_t>(m_linked + 1);
    }
}

/// The next larger offset at which the word that is `ahead` of the position occurs.
std::size_t CLz4Matches::NextOffset(std::size_t offset, std::size_t ahead) const {
    const std::size_t back = m_back[(m_position + ahead - offset) % kRing];
    return back == 0 ? kNowhere : offset + back;
}

/// Returns whether the match at `offset` is longer than the best one, which it then becomes.
bool CLz4Matches::Improves(std::size_t offset) {
    const std::size_t candidate = m_position - offset;
    // Most candidates differ in the byte that follows the best match, or just before it.
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

void CLz4Matches::SearchRuns() {
    if (m_runEnd <= m_position) {
        m_runEnd = m_position + 1 + CommonLength(m_position, m_position + 1, m_limit - 1);
    }
    const std::size_t run = m_runEnd - m_position;
    if (m_position > 0 && m_block[m_position - 1] == m_block[m_position] && run > m_best.length) {
        m_best = {static_cast<std::uint32_t>(run), 1};
    }
    for (std::size_t offset = NextOffset(0, 0);
         offset <= std::min(m_position, kLz4MaxOffset) && m_best.length < run && m_tries-- > 0;
         offset = NextOffset(offset, 0)) {
        std::size_t begin = m_position - offset;
        if (Word(begin) != Word(m_position)) continue;
        std::size_t earlier = kWordSize;
        while (earlier < run && begin > 0 && m_block[begin - 1] == m_block[m_position] && m_position - begin < kLz4MaxOffset) {
            ++earlier; --begin;
        }
        if (earlier > m_best.length) Improves(m_position - begin);
    }
    if (run < m_limit && run < kLookahead) {
        SearchChain(run + 1 - kWordSize);
    }
}

/// Follows the chain of the word that is `ahead` of the position, or that at the end of the best match, whichever leads
/// farther back: a longer match is in both.
void CLz4Matches::SearchChain(std::size_t ahead) {
    std::size_t offset = NextOffset(0, ahead);
    bool improved = true;
    while (m_best.length < m_limit) {
        if (improved && m_best.length >= kWordSize) {
            const std::size_t last = std::min<std::size_t>(m_best.length + 1, kLookahead) - kWordSize;
            if (last != ahead && !IsRun(m_position + last)) {
                std::size_t other = NextOffset(0, last);
                while (other < offset && m_tries-- > 0) other = NextOffset(other, last);
                if (other >= offset) { offset = other; ahead = last; }
            }
        }
        if (offset > std::min(m_position, kLz4MaxOffset) || m_tries-- <= 0) {
            return;
        }
        improved = Improves(offset);
        offset = NextOffset(offset, ahead);
    }
}

std::size_t CLz4Matches::CommonLength(std::size_t earlier, std::size_t position, std::size_t limit) const {
    const std::uint8_t* const a = m_block.data() + earlier;
    const std::uint8_t* const b = m_block.data() + position;
    std::size_t length = 0;
    for (; length + 8 <= limit; length += 8) {
        const std::uint64_t difference = LoadLe64(std::span<const std::uint8_t, 8>(a + length, 8)) ^
                                         LoadLe64(std::span<const std::uint8_t, 8>(b + length, 8));
        if (difference != 0) {
            return length + static_cast<std::size_t>(std::countr_zero(difference)) / 8;
        }
    }
    while (length < limit && a[length] == b[length]) {
        ++length;
    }
    return length;
}

}  // namespace vantrel
