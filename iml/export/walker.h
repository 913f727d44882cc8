// The walk through an image: its leading sectors and its path table are copied to files, and every file is listed in
// the order of the sectors. It is the first stage of an export; contents of files are not touched.
#pragma once

#include <cstdint>
#include <string>

#include "iso/udf.h"
#include "iso/volume.h"
#include "operation/operation.h"

namespace vantrel {

/// Which image is walked and where its side files go. They are written in place, and stay whatever happens.
struct SWalkRequest {
    std::string imagePath;
    /// The image's sectors 0 to the end of the directories (on DVD, of the UDF file entries behind them).
    std::string headerCopyPath;
    /// One line for each file: start sector, size in bytes, number of sectors (8 hexadecimal digits each) and path.
    std::string fileListPath;
    /// The type L path table.
    std::string pathTableCopyPath;
    /// 32-bit numbers, little-endian: sectors of the header copy; then first and last sector of each file.
    std::string offsetListPath;
    /// Whether an image that ends before its directories do is a failure. Otherwise what is missing of it counts as
    /// zeros.
    bool strict = false;
};

/// The window's names: "temp1.tmp", "tmp.tmp" and the image's name with "-LBA.TXT" and ".vlt", all in `folder`, which
/// ends in its separator.
SWalkRequest WindowWalk(const std::string& folder, const std::string& fileName);

/// What the layout writer needs to know of the image besides the side files.
struct SWalkedImage {
    SMediaKey mediaKey;
    std::uint32_t volumeSectors = 0;  ///< volume space size
    TagHead anchorTag = {};           ///< see ReadAnchorTag; zeros unless the image is marked as a DVD
};

/// Paths of listed files are at most this long; an image with a longer one is refused. (ECMA-119 6.8.2.1 allows 255.)
inline constexpr std::size_t kLongestListedPath = 2000;

/// Walks an image and writes its four side files. Fails with the codes 101e (image), 9999 (not marked as CD or DVD, or
/// without any directory), 1101a, 1101b, 1101c, 1104 (side files cannot be created), 1101d and 1101e (cannot be
/// reopened).
SWalkedImage WalkIsoImage(const SWalkRequest& request, COperation& operation);

}  // namespace vantrel
