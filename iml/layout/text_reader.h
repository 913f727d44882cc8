// Reads text like the text mode of a C runtime: CR LF is one line feed, and lines go into one buffer of fixed size that
// keeps the rest of earlier, longer lines.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace vantrel {

/// The buffer for lines. Behind the end of a line it still holds characters of earlier lines, and a failed read leaves
/// it unchanged.
class CLineBuffer {
public:
    /// Room for a line's characters with their terminator.
    static constexpr std::size_t kSize = 2048;

    /// The characters up to the terminator.
    std::string_view Text() const { return Piece(0, kSize); }
    /// At most `count` characters from `position`, up to the next terminator or the end of the buffer.
    std::string_view Piece(std::size_t position, std::size_t count) const;

private:
    friend class CTextReader;
    std::array<char, kSize> m_characters = {};
};

class CTextReader {
public:
    /// Reads bytes at a position; reads fewer than requested only at the end of the file.
    using ByteSource = std::function<std::size_t(std::int64_t position, std::span<std::uint8_t> buffer)>;
    static constexpr int kEnd = -1;

    explicit CTextReader(ByteSource source, std::int64_t start = 0);

    /// The next character; kEnd behind the last one. CR LF counts as one line feed; the byte 1Ah ends the text.
    int Next();
    /// Reads up to and including the next line feed, at most CLineBuffer::kSize - 1 characters; stores line feeds as
    /// terminators. False, with the buffer unchanged, at the end of the text.
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

/// The number at the start of a text, like atoi: skips blanks, accepts a sign, stops at the first other character; 0 if
/// there is no number. Numbers beyond 32 bits wrap.
std::int32_t DecimalOf(std::string_view text);

}  // namespace vantrel
