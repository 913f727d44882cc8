#include "iso/edit/occupied_sectors.h"

#include <algorithm>
#include <iterator>

namespace vantrel {

void COccupiedSectors::Add(std::uint32_t first, std::uint32_t end) {
    if (first >= end) {
        return;
    }
    auto next = m_ends.upper_bound(first);
    if (next != m_ends.begin() && std::prev(next)->second >= first) {
        --next;
    }
    while (next != m_ends.end() && next->first <= end) {
        first = std::min(first, next->first);
        end = std::max(end, next->second);
        next = m_ends.erase(next);
    }
    m_ends.emplace(first, end);
}

bool COccupiedSectors::IsFree(std::uint32_t first, std::uint32_t end) const {
    const auto next = m_ends.lower_bound(first);
    return (next == m_ends.end() || next->first >= end) && (next == m_ends.begin() || std::prev(next)->second <= first);
}

std::uint32_t COccupiedSectors::EndBefore(std::uint32_t limit) const {
    const auto next = m_ends.lower_bound(limit);
    return next == m_ends.begin() ? 0 : std::prev(next)->second;
}

}  // namespace vantrel
