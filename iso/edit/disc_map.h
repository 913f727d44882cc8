// What an image consists of, as an edit needs it: every place that holds a file, everything that names the place, and
// everything else that occupies sectors.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iso/boot_catalogue.h"
#include "iso/edit/occupied_sectors.h"
#include "iso/extent.h"
#include "iso/udf/udf_volume.h"
#include "iso/volume.h"

namespace vantrel {

/// One name of a place, in the tree of one volume.
struct SDiscName {
    std::string path;         ///< folders and name, separated by '/', without version
    std::size_t volume = 0;   ///< 0 is the primary volume; supplementary and enhanced ones follow
    std::int64_t record = 0;  ///< byte position of its directory record, the first one of several
};

/// The sectors of a file, and all that names them. Several names of the same sectors share their content. An empty file
/// is a place of its own.
struct SDiscPlace {
    std::vector<SExtent> extents;         ///< in the order of the content; at least one
    std::vector<SDiscName> names;         ///< those in the primary volume first; at least one
    std::vector<std::size_t> udfFiles;    ///< indices in the UDF volume of those with this content
    std::vector<SBootEntry> bootEntries;  ///< entries of the boot catalogue that name its first sector
    const char* obstacle = "";  ///< why the place cannot be changed, as the predicate of a sentence; empty if it can

    std::uint32_t Sector() const { return extents.front().sector; }
    std::int64_t Size() const;
    const std::string& Path() const { return names.front().path; }
};

/// The volume space size of a volume descriptor.
struct SVolumeSize {
    std::int64_t position = 0;  ///< of the field, in bytes
    std::uint32_t sectors = 0;
};

struct SDiscMap {
    std::int64_t length = 0;  ///< of the image, in bytes
    ImageKind kind = ImageKind::Unknown;
    std::vector<SDiscPlace> places;  ///< by ascending sector
    std::vector<SVolumeSize> volumeSizes;
    COccupiedSectors occupied;        ///< sectors of files and structures
    std::uint32_t closingSector = 0;  ///< where the postgap or the closing anchor begins; else the image's sectors
    std::optional<SUdfVolume> udf;
    std::vector<std::string> warnings;  ///< sides of the image that cannot be read

    std::uint32_t Sectors() const { return static_cast<std::uint32_t>(SectorsFor(length)); }
    /// Index of the place of a file, which its path tells if the file is empty.
    std::optional<std::size_t> FindPlace(std::uint32_t sector, std::int64_t size, const std::string& path) const;
};

enum class EMapRule {
    Complete,       ///< Every volume must be readable.
    ReachableOnly,  ///< Volumes other than the primary one may be unreadable, which gives a warning.
};

/// Reads the structures of an image. Throws CRefused, with the name and the reason, if they contradict themselves or
/// each other, if files overlap that are not the same place, and if anything lies beyond the image.
SDiscMap ReadDiscMap(CByteSource& image, EMapRule rule);

}  // namespace vantrel
