#include "compress/lz4_encoder.h"

#include <algorithm>
#include <utility>

#include "compress/lz4_format.h"
#include "files/byte_order.h"

namespace vantrel {

static_assert(sizeof(CLz4Encoder) <= kLz4EncoderMemory);

namespace {

/// Bytes that continue a length behind its token.
constexpr std::size_t Continuation(std::size_t length) {
    return length < kLz4LongLength ? 0 : (length - kLz4LongLength) / kLz4LengthStep + 1;
}

constexpr std::int32_t ToCost(std::size_t bytes) {
    return static_cast<std::int32_t>(bytes);
}

constexpr std::int32_t LiteralsCost(std::size_t count) {
    return ToCost(count + Continuation(count));
}

/// Of a sequence without literals.
constexpr std::int32_t MatchCost(std::size_t length) {
    return ToCost(1 + kLz4OffsetSize + Continuation(std::max(length, kLz4MinMatch) - kLz4MinMatch));
}

/// The longest match that takes one byte less. If none does, the same length.
constexpr std::size_t LongestCheaper(std::size_t length) {
    constexpr std::size_t kLong = kLz4MinMatch + kLz4LongLength;
    return length < kLong ? length : length - 1 - (length - kLong) % kLz4LengthStep;
}

/// Writes sequences until one does not fit.
class CSequenceWriter {
public:
    CSequenceWriter(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) : m_in(in), m_out(out) {}

    /// Writes the bytes before `position` that are not written yet as literals, then the match.
    bool Write(std::size_t position, const SLz4Match& match) {
        const std::size_t length = match.length - kLz4MinMatch;
        if (!WriteLiterals(position, std::min(length, kLz4LongLength)) ||
            RoomLeft() < kLz4OffsetSize + Continuation(length)) {
            return false;
        }
        std::ranges::copy(Le16(static_cast<std::uint16_t>(match.offset)), m_out.begin() + Index());
        m_written += kLz4OffsetSize;
        WriteContinuation(length);
        m_begin = position + match.length;
        return true;
    }

    bool WriteLast() { return WriteLiterals(m_in.size(), 0); }

    std::size_t Written() const { return m_written; }

private:
    std::size_t RoomLeft() const { return m_out.size() - m_written; }
    std::ptrdiff_t Index() const { return static_cast<std::ptrdiff_t>(m_written); }

    bool WriteLiterals(std::size_t end, std::size_t matchPart) {
        const std::span<const std::uint8_t> literals = m_in.subspan(m_begin, end - m_begin);
        if (RoomLeft() < 1 + Continuation(literals.size()) + literals.size()) {
            return false;
        }
        const std::size_t part = std::min(literals.size(), kLz4LongLength);
        m_out[m_written++] = static_cast<std::uint8_t>(part * (kLz4LongLength + 1) + matchPart);
        WriteContinuation(literals.size());
        std::ranges::copy(literals, m_out.begin() + Index());
        m_written += literals.size();
        return true;
    }

    void WriteContinuation(std::size_t length) {
        if (length < kLz4LongLength) {
            return;
        }
        for (length -= kLz4LongLength; length >= kLz4LengthStep; length -= kLz4LengthStep) {
            m_out[m_written++] = kLz4LengthStep;
        }
        m_out[m_written++] = static_cast<std::uint8_t>(length);
    }

    const std::span<const std::uint8_t> m_in;
    const std::span<std::uint8_t> m_out;
    std::size_t m_begin = 0;  ///< The first byte that is not written yet.
    std::size_t m_written = 0;
};

}  // namespace

std::size_t CLz4Encoder::Encode(std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    CSequenceWriter writer(in, out);
    m_finder.Begin(in);
    for (std::size_t position = 0; position < in.size();) {
        const std::size_t begin = position;
        const std::size_t end = std::min(begin + kSegment, in.size());
        ChooseMatches(begin, end);
        while (position < end) {
            const SLz4Match& match = m_matches[position - begin];
            if (match.length != 0 && !writer.Write(position, match)) {
                return 0;
            }
            position += std::max<std::size_t>(match.length, 1);
        }
    }
    return writer.WriteLast() ? writer.Written() : 0;
}

/// Chooses from the segment's end to its beginning, so that the cost of what follows a position is known: the bytes
/// that it takes. A match may go beyond the segment. What it covers there needs no sequence of its own, which counts as
/// a gain.
void CLz4Encoder::ChooseMatches(std::size_t begin, std::size_t end) {
    const std::size_t size = end - begin;
    for (std::size_t i = 0; i < size; ++i) {
        m_matches[i] = m_finder.Longest(begin + i);
    }
    const auto costFrom = [this, size](std::size_t i) {
        return i <= size ? m_costs[i] : -std::min(ToCost(i - size), MatchCost(i - size));
    };
    m_costs[size] = 0;
    std::size_t literals = 0;  // at the beginning of what follows
    for (std::size_t i = size; i-- > 0;) {
        const std::size_t longest = std::exchange(m_matches[i].length, 0U);
        ++literals;
        m_costs[i] = m_costs[i + 1] + LiteralsCost(literals) - LiteralsCost(literals - 1);
        if (longest == 0) {
            continue;
        }
        for (const std::size_t length : {LongestCheaper(longest), longest}) {
            const std::int32_t cost = MatchCost(length) + costFrom(i + length);
            if (cost <= m_costs[i]) {
                m_costs[i] = cost;
                m_matches[i].length = static_cast<std::uint32_t>(length);
                literals = 0;
            }
        }
    }
}

}  // namespace vantrel
