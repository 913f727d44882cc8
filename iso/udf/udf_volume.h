// The files of a UDF volume (ECMA-167, OSTA UDF 1.02 to 2.01) on one plain partition, as DVD images have it beside
// their ISO 9660 volume, and where its structures are.
//
// Images are not trusted: every tag is checked, no structure is read twice, and memory is limited whatever an image
// claims.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iso/extent.h"

namespace vantrel {

struct SUdfFile {
    std::string path;               ///< folders and name in UTF-8, separated by '/'; empty for the root
    std::uint32_t entrySector = 0;  ///< of the file entry; several names may share one
    bool isFolder = false;
    std::int64_t size = 0;         ///< bytes
    std::vector<SExtent> extents;  ///< in the order of the content, adjacent ones joined; may lie beyond the image
    bool embedded = false;         ///< the content is in the file entry; there are no extents
};

struct SUdfVolume {
    std::vector<SUdfFile> files;      ///< files and folders, each folder before its contents, the root first
    std::vector<SExtent> structures;  ///< whole sectors that anything but the content of files occupies; sorted, joined
    std::vector<std::uint32_t> anchors;  ///< sectors of the valid ones, ascending
    /// The last so many anchors are in consecutive sectors and end the image or the ISO 9660 volume. Some programs fill
    /// the whole padding with anchors.
    std::size_t closingAnchors = 0;
    std::uint32_t partitionStart = 0;    ///< sector
    std::uint32_t partitionSectors = 0;  ///< number of them, as recorded
    /// What is wrong without making the volume unreadable, such as a damaged copy of a descriptor.
    std::vector<std::string> findings;
};

/// Nothing if the image is not marked as UDF. Throws CRefused, with file and reason, if the volume contradicts itself,
/// and CUnsupportedUdf (see unsupported.h) if it needs more than plain partitions and recorded extents.
std::optional<SUdfVolume> ReadUdfVolume(CByteSource& image);

}  // namespace vantrel
