#include "iml/layout/sector_range.h"

#include "iso/iso9660.h"

namespace vantrel {

SSectorRange CRangeRule::Next(std::uint32_t start, std::int64_t size) {
    const std::int64_t sectors = SectorsFor(size);
    const auto padding = static_cast<std::uint32_t>(sectors * kSectorSize - size);
    const std::uint32_t last = size == 0 ? start : start + static_cast<std::uint32_t>(sectors) - 1;
    if (start == m_start && padding == m_padding) {
        return {last, last};
    }
    m_start = start;
    m_padding = padding;
    return {start, last};
}

}  // namespace vantrel
