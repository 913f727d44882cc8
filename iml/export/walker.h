// The walk through an image, the first stage of an export: finds the leading structures and lists every file in the
// order of the sectors. It never reads the contents of files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "iml/export/walk_files.h"
#include "iml/export/walked_file.h"
#include "iso/udf.h"
#include "operation/operation.h"

namespace vantrel {

struct SWalkRequest {
    std::string imagePath;
    /// The side files of the window, whose walks need them; a strict walk, which the console program does, writes none.
    std::optional<SWalkFilePaths> sideFiles = std::nullopt;
    /// Follow the directory tree; an image that ends before its directories do is a failure. Otherwise follow the path
    /// table; missing bytes count as zeros.
    bool strict = false;
    CByteSource* image = nullptr;  ///< The image in the file if the file is a container; null: the file is the image.
};

/// What a walk finds.
struct SWalkedImage {
    std::uint8_t mediaId = 0;         ///< second character of the application identifier (byte 33343)
    std::uint8_t mediaSub = 0;        ///< first character of the CD-XA mark (byte 33792)
    std::uint32_t volumeSectors = 0;  ///< volume space size
    TagHead anchorTag = {};           ///< see ReadAnchorTag; zeros unless the image is marked as a DVD
    /// Sectors of the leading structures: up to the end of the last directory, on DVD up to the last UDF file entry
    /// that precedes the files.
    std::uint32_t headerSectors = 0;
    std::vector<SWalkedFile> files;    ///< in the order of their first sectors
    std::vector<std::string> notices;  ///< what a strict walk found that the layout cannot represent
};

/// Walks an image. Fails with the codes 101e (image) and 9999 (not marked as CD or DVD, or without any directory), and
/// with those of CWalkFiles.
SWalkedImage WalkIsoImage(const SWalkRequest& request, COperation& operation);

}  // namespace vantrel
