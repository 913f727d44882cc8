// The files of an ISO 9660 image, found through its directories from the root down.
//
// This is the complete list, for reports and extraction: every record without the directory flag is a file. The export
// of a layout uses the path table instead and lists only records without any flag, as layouts always have.
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
    bool inside = true;        ///< whether the image holds all of its bytes
};

struct SContents {
    std::vector<SContentFile> files;  ///< in the order of their first sectors
    std::uint32_t folders = 0;        ///< the root included
};

/// Reads every directory once. Skips records that cannot be right; directories that contain each other end the search.
SContents ReadContents(CByteSource& image);

}  // namespace vantrel
