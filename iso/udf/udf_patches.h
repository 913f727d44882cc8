// Changes to the structures of a UDF volume after a file was replaced.
#pragma once

#include <cstdint>
#include <vector>

#include "files/byte_source.h"
#include "iso/patch.h"
#include "iso/udf/udf_volume.h"

namespace vantrel {

/// The patches that make the content of `file` the `size` bytes from `sector` on, which may lie behind the present end
/// of the partition. For an empty file, `sector` does not matter. Names that share a file entry share the patches.
/// Throws CRefused, with file and reason, if the entry cannot say it.
std::vector<SSectorPatch> PatchUdfFile(CByteSource& image, const SUdfVolume& volume, const SUdfFile& file,
                                       std::uint32_t sector, std::int64_t size);

/// The patches that lengthen the volume by `added` sectors: lengths of the partition in both volume descriptor
/// sequences and in the integrity descriptors, and the closing anchors that much later. Throws CRefused if the
/// partition describes its free space, as rewritable volumes do, and if the image no longer has the volume.
std::vector<SSectorPatch> PatchUdfLength(CByteSource& image, const SUdfVolume& volume, std::uint32_t added);

}  // namespace vantrel
