#include "iml/file_list.h"

#include <array>
#include <charconv>

namespace vantrel {

namespace {

constexpr std::size_t kStartColumn = 0;
constexpr std::size_t kSizeColumn = 9;
constexpr std::size_t kDigits = 8;
constexpr std::size_t kPathColumn = 28;  // behind three numbers and the separator that begins every path
constexpr std::size_t kLongestLine = 64U * 1024U;

std::uint32_t NumberAt(const std::string& text, std::size_t column) {
    std::uint32_t value = 0;
    if (column < text.size()) {
        const char* begin = text.data() + column;
        std::from_chars(begin, begin + std::min(kDigits, text.size() - column), value, 16);
    }
    return value;
}

}  // namespace

bool CFileListReader::ReadLine(std::string& text) {
    text.clear();
    std::array<std::uint8_t, 1> byte = {};
    bool any = false;
    while (m_file.Read(byte) == 1) {
        any = true;
        if (byte[0] == '\n') {
            break;
        }
        if (text.size() < kLongestLine) {
            text += static_cast<char>(byte[0]);
        }
    }
    if (!text.empty() && text.back() == '\r') {
        text.pop_back();
    }
    return any;
}

bool CFileListReader::Next(SFileListLine& line) {
    std::string text;
    if (!ReadLine(text)) {
        return false;
    }
    line.start = NumberAt(text, kStartColumn);
    line.size = NumberAt(text, kSizeColumn);
    line.path = text.size() > kPathColumn ? text.substr(kPathColumn) : std::string();
    return true;
}

}  // namespace vantrel
