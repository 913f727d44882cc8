// Reading of text files in the way of a C runtime's text mode: characters with CR LF as one line feed, and lines into
// one buffer of fixed size that keeps what the last line left there. For the layout and its entry list.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace vantrel {

/// The one buffer into which lines are read. Characters behind the end of a shorter line are those of earlier lines,
/// and a line that could not be read leaves the earlier one in place.
class CLineBuffer {
public:
    /// Room for a line's characters with their terminator.
    static constexpr std::size_t kSize = 2048;

    /// The characters up to the terminator.
    std::string_view Text() const { return Piece(0, kSize); }
    /// At most `count` characters from `position` on, ended by the next terminator or the end of the buffer.
    std::string_view Piece(std::size_t position, std::size_t count) const;

private:
    friend class CTextReader;
    std::array<char, kSize> m_characters = {};
};

class CTextReader {
public:
    /// Reads bytes at a position of the file; the number read is smaller than the buffer only at the end.
    using ByteSource = std::function<std::size_t(std::int64_t position, std::span<std::uint8_t> buffer)>;
    static constexpr int kEnd = -1;

    explicit CTextReader(ByteSource source, std::int64_t start = 0);

    /// The next character, kEnd after the last one. CR LF is one line feed; the byte 1Ah ends the text.
    int Next();
    /// Reads up to and with the next line feed, at most CLineBuffer::kSize − 1 characters; line feeds are stored as
    /// terminators. False, with the buffer as it was, at the end of the text.
    bool ReadLine(CLineBuffer& line);
    /// Position in bytes of the next character.
    std::int64_t Position() const { return m_chunkStart + static_cast<std::int64_t>(m_next); }

private:
    int Peek();

    ByteSource m_source;
    std::vector<std::uint8_t> m_chunk;
    std::int64_t m_chunkStart;
    std::size_t m_next = 0;
};

/// The number at the start of a text in the manner of atoi: leading blanks and a sign are accepted, anything else ends
/// it, nothing gives 0. Numbers beyond 32 bits wrap.
std::int32_t DecimalOf(std::string_view text);

/// The unsigned hexadecimal number at the start of a text, 0 when there is none.
std::uint32_t HexadecimalOf(std::string_view text);

}  // namespace vantrel
