#include "iml/file_list.h"

#include <algorithm>
#include <charconv>

namespace vantrel {

namespace {

constexpr std::size_t kStartColumn = 0;
constexpr std::size_t kSizeColumn = 9;
constexpr std::size_t kDigits = 8;
constexpr std::size_t kPathColumn = 28;  // behind three numbers and the separator that begins every path
constexpr std::size_t kChunkSize = 16'384;
constexpr std::size_t kLongestLine = 65'536;

std::uint32_t NumberAt(const std::string& text, std::size_t column) {
    std::uint32_t value = 0;
    if (column < text.size()) {
        const char* begin = text.data() + column;
        std::from_chars(begin, begin + std::min(kDigits, text.size() - column), value, 16);
    }
    return value;
}

}  // namespace

bool CFileListReader::FillChunk() {
    m_chunk.resize(kChunkSize);
    m_chunk.resize(m_file.Read(m_chunk));
    m_next = 0;
    return !m_chunk.empty();
}

bool CFileListReader::ReadLine() {
    m_text.clear();
    bool isWhole = false;
    bool any = false;
    while (!isWhole && (m_next < m_chunk.size() || FillChunk())) {
        any = true;
        const auto start = m_chunk.begin() + static_cast<std::ptrdiff_t>(m_next);
        const auto end = std::find(start, m_chunk.end(), static_cast<std::uint8_t>('\n'));
        const auto room = static_cast<std::ptrdiff_t>(kLongestLine - m_text.size());
        m_text.append(start, start + std::min(end - start, room));
        isWhole = end != m_chunk.end();
        m_next = static_cast<std::size_t>(end - m_chunk.begin()) + (isWhole ? 1 : 0);
    }
    if (!m_text.empty() && m_text.back() == '\r') {
        m_text.pop_back();
    }
    return any;
}

bool CFileListReader::Next(SFileListLine& line) {
    if (!ReadLine()) {
        return false;
    }
    line.start = NumberAt(m_text, kStartColumn);
    line.size = NumberAt(m_text, kSizeColumn);
    line.path.assign(m_text, std::min(kPathColumn, m_text.size()));
    return true;
}

}  // namespace vantrel
