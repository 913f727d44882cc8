#include "compress/lz4_decoder.h"

#include <algorithm>
#include <cstring>

#include "compress/lz4_format.h"
#include "files/byte_order.h"

namespace vantrel {

namespace {

/// Most literals and matches are short: where there is room, copying a fixed number of bytes is faster.
constexpr std::size_t kShortCopy = 16;

/// Every function returns false if the block is damaged.
class CLz4Decoder {
public:
    CLz4Decoder(std::span<const std::uint8_t> block, std::span<std::uint8_t> out) : m_block(block), m_out(out) {}

    bool Run() {
        while (RoomLeft() > 0) {
            if (InputLeft() == 0) {
                return false;
            }
            const std::uint8_t token = m_block[m_read++];
            if (!CopyLiterals(token / (kLz4LongLength + 1))) {
                return false;
            }
            if (InputLeft() == 0 || RoomLeft() == 0) {
                return true;
            }
            if (!CopyMatch(token % (kLz4LongLength + 1))) {
                return false;
            }
        }
        return true;
    }

    std::size_t Written() const { return m_written; }

private:
    std::size_t InputLeft() const { return m_block.size() - m_read; }
    std::size_t RoomLeft() const { return m_out.size() - m_written; }

    /// Adds the bytes that continue a length, but not many more than there is room for.
    bool ContinueLength(std::size_t& length) {
        if (length < kLz4LongLength) {
            return true;
        }
        std::size_t step = kLz4LengthStep;
        while (step == kLz4LengthStep && length <= RoomLeft()) {
            if (InputLeft() == 0) {
                return false;
            }
            step = m_block[m_read++];
            length += step;
        }
        return true;
    }

    bool CopyLiterals(std::size_t length) {
        if (!ContinueLength(length) || length > InputLeft() || length > RoomLeft()) {
            return false;
        }
        const bool isShort = length <= kShortCopy && InputLeft() >= kShortCopy && RoomLeft() >= kShortCopy;
        std::memcpy(m_out.data() + m_written, m_block.data() + m_read, isShort ? kShortCopy : length);
        m_read += length;
        m_written += length;
        return true;
    }

    bool CopyMatch(std::size_t length) {
        if (InputLeft() < kLz4OffsetSize) {
            return false;
        }
        const std::size_t offset = LoadLe16(m_block.subspan(m_read).first<kLz4OffsetSize>());
        m_read += kLz4OffsetSize;
        if (!ContinueLength(length)) {
            return false;
        }
        length += kLz4MinMatch;
        if (offset == 0 || offset > m_written || length > RoomLeft()) {
            return false;
        }
        Repeat(offset, length);
        m_written += length;
        return true;
    }

    /// Copies output from `offset` bytes back. A match that overlaps its own output repeats its first bytes, so each
    /// round can copy everything from there on.
    void Repeat(std::size_t offset, std::size_t length) {
        std::uint8_t* const to = m_out.data() + m_written;
        if (length <= kShortCopy && offset >= kShortCopy && RoomLeft() >= kShortCopy) {
            std::memcpy(to, to - offset, kShortCopy);
            return;
        }
        for (std::size_t copied = 0; copied < length;) {
            const std::size_t part = std::min(offset + copied, length - copied);
            std::memcpy(to + copied, to - offset, part);
            copied += part;
        }
    }

    const std::span<const std::uint8_t> m_block;
    const std::span<std::uint8_t> m_out;
    std::size_t m_read = 0;
    std::size_t m_written = 0;
};

}  // namespace

std::optional<std::size_t> DecodeLz4(std::span<const std::uint8_t> block, std::span<std::uint8_t> out) {
    CLz4Decoder decoder(block, out);
    return decoder.Run() ? std::optional(decoder.Written()) : std::nullopt;
}

}  // namespace vantrel
