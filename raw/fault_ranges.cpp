#include "raw/fault_ranges.h"

namespace vantrel {

void CFaultRanges::Add(std::uint64_t number, const std::string& text) {
    if (!m_ranges.empty() && m_ranges.back().last + 1 == number && m_ranges.back().text == text) {
        m_ranges.back().last = number;
    } else {
        m_ranges.push_back({number, number, text});
    }
}

std::vector<std::string> CFaultRanges::Lines() const {
    std::vector<std::string> lines;
    for (const SRange& range : m_ranges) {
        const std::string numbers = range.first == range.last ? m_noun + " " + std::to_string(range.first)
                                                              : m_noun + "s " + std::to_string(range.first) + " to " +
                                                                    std::to_string(range.last);
        lines.push_back(numbers + ": " + range.text);
    }
    return lines;
}

}  // namespace vantrel
