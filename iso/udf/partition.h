// The partition of a UDF volume, whose structures name logical blocks instead of sectors.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "files/byte_source.h"
#include "iso/extent.h"
#include "iso/iso9660.h"

namespace vantrel {

using UdfBlock = std::array<std::uint8_t, kSectorSize>;

class CPartition {
public:
    CPartition(CByteSource& image, std::uint32_t start, std::uint32_t sectors);

    /// Whether an extent lies in the partition, which may be longer than the image.
    bool Holds(std::uint32_t block, std::int64_t bytes) const;
    // For blocks and sectors in the partition.
    std::uint32_t SectorOf(std::uint32_t block) const { return m_start + block; }

    std::uint32_t BlockOf(std::uint32_t sector) const { return sector - m_start; }

    /// Reads a block of structures, which then belongs to its reader. Nullopt if the block is outside of partition or
    /// image, or was taken before: structures do not share blocks, and cycles of them end.
    std::optional<UdfBlock> Take(std::uint32_t block);

    /// Everything that was taken, in the order of the sectors, adjacent sectors joined.
    std::vector<SExtent> Taken() const;

private:
    CByteSource& m_image;
    std::uint32_t m_start;
    std::uint32_t m_blocks;
    std::vector<bool> m_taken;
};

}  // namespace vantrel
