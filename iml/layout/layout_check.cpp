#include "iml/layout/layout_check.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "iml/layout/layout_reader.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kFirstLine = "[SYS]";
constexpr std::string_view kCountStart = "# the number of entries:";
constexpr std::size_t kQuoteColumn = 27;
/// The rebuild reads a line into a buffer, with its line feed and a terminator.
constexpr std::size_t kLongestLine = CLineBuffer::kSize - 2;
/// NUL ends a line for the rebuild, and 1Ah the text.
constexpr std::string_view kTextEnds("\0\x1A", 2);

/// Reads a layout line by line.
class CLines {
public:
    explicit CLines(CByteSource& layout) : m_layout(layout) {}

    /// Moves to the next line. False at the end.
    bool Next() {
        m_line.clear();
        ++m_number;
        while (m_line.size() <= kLongestLine + kLineEnd.size() && Fill()) {
            const char c = static_cast<char>(m_buffer[m_used++]);
            m_line += c;
            if (c == '\n') {
                break;
            }
        }
        return !m_line.empty();
    }

    int Number() const { return m_number; }
    /// The line without its end.
    std::string_view Text() const {
        std::string_view text = m_line;
        for (const char end : {'\n', '\r'}) {
            if (text.ends_with(end)) {
                text.remove_suffix(1);
            }
        }
        return text;
    }
    bool HasLineFeedAlone() const { return m_line.ends_with('\n') && !m_line.ends_with(kLineEnd); }
    bool IsTooLong() const { return Text().size() > kLongestLine; }

private:
    bool Fill() {
        if (m_used == m_filled) {
            m_filled = m_layout.ReadAt(m_position, m_buffer);
            m_position += static_cast<std::int64_t>(m_filled);
            m_used = 0;
        }
        return m_used < m_filled;
    }

    CByteSource& m_layout;
    std::array<std::uint8_t, 4096> m_buffer = {};
    std::int64_t m_position = 0;
    std::size_t m_used = 0;
    std::size_t m_filled = 0;
    std::string m_line;
    int m_number = 0;
};

bool IsNumber(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// What is wrong with the line of an entry; empty if nothing. The last entry of a DVD has the position of its sector in
/// the leading structures behind its path.
std::string EntryProblem(std::string_view line, bool hasPosition) {
    if (line.size() <= kQuoteColumn || line[kQuoteColumn] != '"') {
        return "no entry: the path has to start with a quote in column 28";
    }
    const std::string_view path = line.substr(kQuoteColumn + 1);
    const std::size_t quote = path.rfind('"');
    if (quote == std::string_view::npos) {
        return "no closing quote";
    }
    if (quote == 0) {
        return "no path";
    }
    const std::string_view behind = path.substr(quote + 1);
    const bool isPosition = hasPosition && behind.starts_with(' ') && IsNumber(behind.substr(1));
    return behind.empty() || isPosition ? "" : "text behind the closing quote";
}

class CLayoutCheck {
public:
    explicit CLayoutCheck(CByteSource& layout) : m_lines(layout), m_letter(MediaLetterOf(layout)) {}

    std::string Problem() {
        while (m_problem.empty() && !m_hasEnded && m_lines.Next()) {
            CheckLine();
        }
        if (m_problem.empty() && m_isLayout) {
            CheckCount();
        }
        return m_problem;
    }

private:
    void CheckLine() {
        const std::string_view text = m_lines.Text();
        if (m_lines.Number() == 1) {
            m_isLayout = text == kFirstLine || IsCdLetter(m_letter) || IsDvdLetter(m_letter);
        }
        if (m_lines.Number() == 1 && text.starts_with(kByteOrderMark)) {
            Report(1, "starts with a UTF-8 byte order mark; save the layout without one");
        } else if (!m_isLayout) {
            m_hasEnded = true;
        } else if (m_lines.HasLineFeedAlone()) {
            Report(m_lines.Number(), "ends with LF alone; the lines of a layout end with CR LF");
        } else if (m_lines.IsTooLong()) {
            Report(m_lines.Number(), "longer than any line of a layout");
        } else if (m_countLine == 0) {
            ReadCount(text);
        } else if (m_lines.Number() > m_countLine + 1) {
            CheckEntry(text);
        }
    }

    /// The rebuild takes the text behind a certain '#' for the number of entries.
    void ReadCount(std::string_view text) {
        const auto hashes = std::count(text.begin(), text.end(), '#');
        if (!text.starts_with(kCountStart)) {
            m_hashes += hashes;
            return;
        }
        m_countLine = m_lines.Number();
        m_count = EntryCountOf(text.substr(std::min(text.size(), kCountStart.size() + 1)));
        if (m_hashes + 1 != ShapeOf(m_letter).hashes) {
            Report(m_countLine, "the number of entries does not follow the tables of this medium");
        }
    }

    void CheckEntry(std::string_view text) {
        if (text.empty() || text.starts_with('[')) {
            m_hasEnded = true;
            return;
        }
        ++m_entries;
        std::string problem = EntryProblem(text, IsDvdLetter(m_letter) && m_entries == m_count);
        if (text.find_first_of(kTextEnds) != std::string_view::npos) {
            problem = "has a character that ends the text";
        }
        if (!problem.empty()) {
            Report(m_lines.Number(), problem);
        }
    }

    void CheckCount() {
        if (m_countLine == 0) {
            Report(m_lines.Number(), "the layout ends before its number of entries");
        } else if (m_entries != m_count) {
            Report(m_countLine, Format("the number of entries is %lld, but there are %lld",
                                       static_cast<long long>(m_count), static_cast<long long>(m_entries)));
        }
    }

    void Report(int line, const std::string& problem) { m_problem = Format("line %d: %s", line, problem.c_str()); }

    CLines m_lines;
    const char m_letter;
    bool m_isLayout = false;
    std::string m_problem;
    std::int64_t m_hashes = 0;  ///< Number of '#' before the count line.
    int m_countLine = 0;
    std::int64_t m_count = 0;
    std::int64_t m_entries = 0;
    bool m_hasEnded = false;
};

}  // namespace

std::string LayoutProblem(CByteSource& layout) {
    return CLayoutCheck(layout).Problem();
}

}  // namespace vantrel
