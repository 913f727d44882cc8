// The files that an ISO 9660 image holds, found through its directories from the root on.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "files/byte_source.h"

namespace vantrel {

struct SContentFile {
    std::string path;          ///< folders and name, separated by '/', without version
    std::uint32_t sector = 0;  ///< first sector of the extent
    std::uint32_t size = 0;    ///< bytes
    bool inside = true;        ///< whether all of its bytes lie inside the image
};

struct SContents {
    std::vector<SContentFile> files;  ///< in the order of their first sectors
    std::uint32_t folders = 0;        ///< the root included
};

/// Reads every directory once. Records that cannot be right are passed over, so a hostile image ends as any other.
SContents ReadContents(CByteSource& image);

}  // namespace vantrel
