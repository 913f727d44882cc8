// The volume structure of UDF (ECMA-167 part 3): from the recognition sequence over anchors and volume descriptor
// sequences to the one partition that holds the files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iso/extent.h"
#include "iso/udf/structures.h"

namespace vantrel {

struct SVolumeStructure {
    std::vector<std::uint32_t> anchors;  ///< sectors of the valid ones, ascending
    /// Number of anchors in consecutive sectors of which the last one ends the image or the ISO 9660 volume. Some
    /// programs fill the whole padding with anchors.
    std::size_t closingAnchors = 0;
    std::vector<std::uint32_t> partitionDescriptors;  ///< sectors, in main and reserve sequence
    std::vector<std::uint32_t> integrityDescriptors;  ///< sectors, the prevailing one last
    std::uint32_t partitionStart = 0;                 ///< sector
    std::uint32_t partitionSectors = 0;
    bool hasSpaceTables = false;  ///< whether the partition describes its free space, as rewritable volumes do
    SLongAllocation fileSet = {};
    std::vector<SExtent> areas;         ///< everything that these structures occupy
    std::vector<std::string> findings;  ///< what is wrong without making the volume unreadable
};

/// Nothing if the image has no UDF recognition sequence. Throws CRefused, with the reason alone, if a volume that the
/// sequence announces cannot be found, and CUnsupportedUdf if it is no volume of one plain partition.
std::optional<SVolumeStructure> ReadVolumeStructure(CByteSource& image);

}  // namespace vantrel
