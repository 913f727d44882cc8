// The directory records of one tree with their positions, for changing them. Unlike the readers of reports and exports,
// this one refuses a tree that it cannot fully trust.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iso/extent.h"
#include "iso/iso9660.h"

namespace vantrel {

/// How a tree encodes names: one byte per character, or UCS-2 in big-endian order (Joliet).
enum class ENameCoding { Bytes, Ucs2 };

struct STreeFile {
    std::string path;              ///< folders and name, separated by '/', without version; see LineName
    std::vector<SExtent> extents;  ///< in the order of the content; at least one
    std::int64_t record = 0;       ///< byte position in the image of its directory record, the first one of several
    const char* obstacle = "";     ///< why it cannot be changed, as the predicate of a sentence; empty if it can

    std::uint32_t Sector() const { return extents.front().sector; }
    std::int64_t Size() const;
};

struct STreeFolder {
    std::string path;  ///< with its closing separator, empty for the root
    SExtent extent;
};

struct STreeRecords {
    std::vector<STreeFile> files;
    std::vector<STreeFolder> folders;  ///< the root first
};

/// Reads the tree below the root directory that `root` records (ECMA-119 6.8). Throws CRefused, with the name and the
/// reason, for directories that contain each other, two lengths of one directory, records that do not fit their sector,
/// and everything that lies beyond the image.
STreeRecords ReadTreeRecords(CByteSource& image, const SDirectoryRecord& root, ENameCoding coding);

}  // namespace vantrel
