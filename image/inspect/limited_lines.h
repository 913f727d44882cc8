// Findings of one kind. A damaged image can have hundreds of thousands of them, of which nobody reads more than a few.
#pragma once

#include <string>
#include <vector>

#include "operation/text.h"

namespace vantrel {

class CLimitedLines {
public:
    /// `kind` ends the line "and 5 more ...", which replaces all lines beyond the limit.
    explicit CLimitedLines(const char* kind) : m_kind(kind) {}

    void Add(const std::string& line) {
        if (m_lines.size() < kMost) {
            m_lines.push_back(line);
        } else {
            ++m_more;
        }
    }

    std::vector<std::string> Lines() const {
        std::vector<std::string> lines = m_lines;
        if (m_more > 0) {
            lines.push_back(Format("and %zu more %s", m_more, m_kind));
        }
        return lines;
    }

private:
    static constexpr std::size_t kMost = 20;

    const char* m_kind;
    std::vector<std::string> m_lines;
    std::size_t m_more = 0;
};

}  // namespace vantrel
