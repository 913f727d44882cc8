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
constexpr std::size_t kLongEnough = 256;

}  // namespace

void CLz4Matches::Begin(std::span<const std::uint8_t> block) {
    m_block = block;
    m_next = 0;
    m_last = {};
    // A small block uses few heads, because clearing all of them would take longer than encoding it.
    m_hashBits = std::min(static_cast<unsigned>(std::bit_width(block.size())), kMaxHashBits);
    std::fill_n(m_heads.begin(), std::size_t{1} << m_hashBits, 0U);
}

SLz4Match CLz4Matches::Longest(std::size_t position) {
    const bool inherits = position == m_next && m_last.length > kLz4MinMatch;
    m_last = inherits ? SLz4Match{m_last.length - 1, m_last.offset} : SLz4Match{};
    if (m_block.size() - position <= kLz4MatchMargin) {
        return m_last = {};
    }
    while (m_next < position) {
        InsertNext();
    }
    if (m_last.length < kLongEnough) {
        Search(position);
    }
    InsertNext();
    return m_last;
}

std::uint32_t CLz4Matches::Word(std::size_t position) const {
    return LoadLe32(m_block.subspan(position).first<4>());
}

std::uint32_t& CLz4Matches::HeadOf(std::size_t position) {
    constexpr std::uint32_t kMultiplier = 0x9E3779B1;  // a prime near 2^32 divided by the golden ratio
    return m_heads[Word(position) * kMultiplier >> (32 - m_hashBits)];
}

void CLz4Matches::InsertNext() {
    std::uint32_t& head = HeadOf(m_next);
    const std::size_t back = head == 0 ? 0 : m_next + 1 - head;
    m_back[m_next % kWindow] = static_cast<std::uint16_t>(back <= kLz4MaxOffset ? back : 0);
    head = static_cast<std::uint32_t>(++m_next);
}

/// Looks for a longer match than `m_last`.
void CLz4Matches::Search(std::size_t position) {
    const std::size_t limit = m_block.size() - kLz4LastLiterals - position;
    std::size_t longest = std::max<std::size_t>(m_last.length, kLz4MinMatch - 1);
    std::size_t ahead = 0;
    std::size_t offset = position + 1 - HeadOf(position);
    int tries = kMaxCandidates;
    while (offset <= std::min(position, kLz4MaxOffset) && longest < limit && tries-- > 0) {
        const std::size_t candidate = position - offset;
        std::size_t step = m_back[(candidate + ahead) % kWindow];
        // A longer match has the same four bytes up to and including the next one.
        if (Word(candidate + longest - 3) == Word(position + longest - 3)) {
            const std::size_t length = CommonLength(candidate, position, limit);
            if (length > longest) {
                longest = length;
                m_last = {static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(offset)};
                if (longest == limit)
                    return;
                std::size_t next = longest - 3;
                std::size_t other = position + next + 1 - HeadOf(position + next);
                while (other <= offset && tries-- > 0) {
                    const std::size_t s = m_back[(position + next - other) % kWindow];
                    if (s == 0)
                        return;
                    other += s;
                }
                if (step == 0 || other > offset + step) {
                    offset = other;
                    ahead = next;
                    continue;
                }
            }
        }
        if (step == 0)
            return;
        offset += step;
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
