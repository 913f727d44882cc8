#include "iso/udf/partition.h"

#include <algorithm>
#include <limits>

namespace vantrel {

CPartition::CPartition(CByteSource& image, std::uint32_t start, std::uint32_t sectors)
    : m_image(image),
      m_start(start),
      // A sum with the start always fits 32 bits.
      m_blocks(std::min(sectors, std::numeric_limits<std::uint32_t>::max() - start)),
      m_taken(static_cast<std::size_t>(
          std::clamp<std::int64_t>(image.Size() / kSectorSize - start, 0, std::int64_t{m_blocks}))) {}

bool CPartition::Holds(std::uint32_t block, std::int64_t bytes) const {
    return block + SectorsFor(bytes) <= m_blocks;
}

std::optional<UdfBlock> CPartition::Take(std::uint32_t block) {
    if (block >= m_taken.size() || m_taken[block]) {
        return std::nullopt;
    }
    m_taken[block] = true;
    UdfBlock bytes = {};
    m_image.ReadAt(SectorOf(block) * kSectorSize, bytes);
    return bytes;
}

std::vector<SExtent> CPartition::Taken() const {
    std::vector<SExtent> areas;
    for (auto first = m_taken.begin(); first != m_taken.end();) {
        first = std::find(first, m_taken.end(), true);
        const auto end = std::find(first, m_taken.end(), false);
        if (first != end) {
            const auto block = static_cast<std::uint32_t>(first - m_taken.begin());
            areas.push_back({SectorOf(block), (end - first) * kSectorSize});
        }
        first = end;
    }
    return areas;
}

}  // namespace vantrel
