// File entries of UDF (ECMA-167 4/14.9 and 4/14.17): what they say, and how they say something else.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "iso/udf/structures.h"

namespace vantrel {

/// A part of the content of a file, or of its list of parts, in a partition.
struct SBlockExtent {
    EExtentType type = EExtentType::Recorded;
    std::uint32_t block = 0;
    std::uint32_t length = 0;  ///< bytes
};

/// A file entry or extended file entry that occupies a block.
struct SEntryFields {
    bool isExtended = false;
    bool isFolder = false;
    EAllocation allocation = EAllocation::Short;
    std::int64_t size = 0;            ///< bytes of content
    std::size_t allocationStart = 0;  ///< offset of the allocation descriptors or of the embedded content
    std::size_t allocationLength = 0;
};

/// Reads the fields of the entry in `block`, whose number in the partition is `location`. Throws CRefused or
/// CUnsupportedUdf with the reason alone.
SEntryFields ReadEntryFields(std::span<const std::uint8_t> block, std::uint32_t location);

/// The extents in a list of allocation descriptors, up to the one of length 0 that ends it. Throws CRefused if one is
/// outside of the first partition.
std::vector<SBlockExtent> AllocationsOf(std::span<const std::uint8_t> list, EAllocation kind);

/// Changes the entry in `block` so that the content is the `size` bytes from `firstBlock` on. Returns the number of
/// bytes, from the start of the block, that may have changed. Throws CRefused if the allocation descriptors do not fit.
std::size_t SetContent(std::span<std::uint8_t> block, std::uint32_t location, std::uint32_t firstBlock,
                       std::int64_t size);

}  // namespace vantrel
