#include "iml/layout/text_reader.h"

#include <algorithm>
#include <utility>

namespace vantrel {

namespace {

constexpr std::size_t kChunkSize = 16'384;
constexpr int kEndOfText = 0x1A;

bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

std::string_view CLineBuffer::Piece(std::size_t position, std::size_t count) const {
    std::string_view rest(m_characters.data(), m_characters.size());
    rest.remove_prefix(std::min(position, rest.size()));
    rest = rest.substr(0, count);
    return rest.substr(0, rest.find('\0'));
}

CTextReader::CTextReader(ByteSource source, std::int64_t start) : m_source(std::move(source)), m_chunkStart(start) {}

int CTextReader::Peek() {
    if (m_next == m_chunk.size()) {
        m_chunkStart += static_cast<std::int64_t>(m_next);
        m_next = 0;
        m_chunk.resize(kChunkSize);
        m_chunk.resize(m_source(m_chunkStart, m_chunk));
    }
    return m_next < m_chunk.size() ? m_chunk[m_next] : kEnd;
}

int CTextReader::Next() {
    const int character = Peek();
    if (character == kEnd || character == kEndOfText) {
        return kEnd;
    }
    ++m_next;
    if (character == '\r' && Peek() == '\n') {
        ++m_next;
        return '\n';
    }
    return character;
}

bool CTextReader::ReadLine(CLineBuffer& line) {
    std::size_t length = 0;
    while (length < CLineBuffer::kSize - 1) {
        const int character = Next();
        if (character == kEnd) {
            break;
        }
        line.m_characters[length] = character == '\n' ? '\0' : static_cast<char>(character);
        ++length;
        if (character == '\n') {
            break;
        }
    }
    if (length == 0) {
        return false;
    }
    line.m_characters[length] = '\0';
    return true;
}

std::int32_t DecimalOf(std::string_view text) {
    const auto* next = std::find_if_not(text.begin(), text.end(), IsBlank);
    const bool negative = next != text.end() && *next == '-';
    if (next != text.end() && (*next == '-' || *next == '+')) {
        ++next;
    }
    std::uint32_t value = 0;
    for (; next != text.end() && IsDigit(*next); ++next) {
        value = value * 10U + static_cast<std::uint32_t>(*next - '0');
    }
    return static_cast<std::int32_t>(negative ? 0U - value : value);
}

}  // namespace vantrel
