// The files of an ISO 9660 image, found through its directories from the root down.
//
// This is the complete list, for reports, extraction and the exports of the console program: every record without the
// directory flag is a file, and consecutive records of one name that are marked as continued are one file. The window's
// export uses the path table instead and lists only records without any flag, as layouts always have.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iso/extent.h"

namespace vantrel {

struct SContentFile {
    std::string path;                  ///< folders and name, without version
    std::uint8_t flags = 0;            ///< of the last record (ECMA-119 9.1.6)
    std::vector<SExtent> extents;      ///< in the order of the content; at least one
    bool inside = true;                ///< whether the image holds all of its bytes
    std::optional<std::int64_t> date;  ///< of the recording, in seconds since 1970 (UTC)

    std::uint32_t Sector() const { return extents.front().sector; }
    std::int64_t Size() const;
    /// Whether every extent starts behind the last sector of the one before, so that one range of sectors holds them
    /// all.
    bool IsContiguous() const;
};

struct SContentFolder {
    std::string path;           ///< with its closing separator, empty for the root
    std::uint32_t sector = 0;   ///< first sector
    std::uint32_t sectors = 0;  ///< those that the image holds
    bool inside = true;         ///< whether the image holds the whole directory
};

struct SContents {
    std::vector<SContentFile> files;      ///< in the order of their first sectors
    std::vector<SContentFolder> folders;  ///< the root first
};

/// Reads every directory once, from the root of the primary volume. Skips records that cannot be right; directories
/// that contain each other end the search. '/' separates folders and name in paths.
SContents ReadContents(CByteSource& image);

/// The same for any directory tree, such as that of a supplementary volume: its root is at sector `root`. Calls
/// `afterRead` after each sector and record.
SContents ReadTree(CByteSource& image, std::uint32_t root, char separator, const std::function<void()>& afterRead);

}  // namespace vantrel
