// The directory trees of an image, one for each of its volume descriptors and one for UDF, in the form in which they
// can be checked and compared.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "image/inspect/limited_lines.h"
#include "iso/extent.h"
#include "iso/iso9660.h"
#include "iso/udf/udf_volume.h"

namespace vantrel {

/// Sector of the first volume descriptor.
inline constexpr std::uint32_t kFirstDescriptor = 16;

struct SDiscFile {
    std::string path;              ///< folders and name in UTF-8, separated by '/', without version
    std::vector<SExtent> extents;  ///< adjacent ones joined; none if the file is empty
    std::uint32_t sector = 0;      ///< the recorded one, also of an empty file
    std::int64_t size = 0;
};

struct SDiscFolder {
    std::string path;           ///< empty for the root
    std::uint32_t sector = 0;   ///< first sector
    std::uint32_t sectors = 0;  ///< those that the image holds
};

struct SDiscTree {
    std::string prefix;  ///< for messages: empty, or the name of the tree with a colon
    std::vector<SDiscFile> files;
    std::vector<SDiscFolder> folders;  ///< the root first; of UDF none
};

/// A volume of ISO 9660.
struct SIsoVolume {
    std::uint32_t sector = 0;  ///< of its descriptor
    SPrimaryVolumeDescriptor descriptor = {};
    bool isJoliet = false;
    SDiscTree tree;
};

/// The volumes that the descriptors from sector 16 on describe, the primary one first. A volume that has the
/// directories of an earlier one has an empty tree. Adds what the records contradict themselves in to `problems`.
std::vector<SIsoVolume> ReadIsoVolumes(CByteSource& image, CLimitedLines& problems);

/// The files of a UDF volume.
SDiscTree TreeOf(const SUdfVolume& volume);

/// Text for messages about a folder: "the folder DIR" or "the root directory".
std::string NameOfFolder(const SDiscTree& tree, const std::string& path);

}  // namespace vantrel
