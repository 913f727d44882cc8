// One file of an image as an export lists it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "iso/iso9660.h"

namespace vantrel {

struct SWalkedFile {
    std::uint32_t start;  ///< first sector
    std::int64_t size;    ///< bytes
    std::string path;     ///< "DIR\NAME", without version
    /// Date of the recording in seconds since 1970 (UTC), as far as the walk reads it.
    std::optional<std::int64_t> date = std::nullopt;

    /// Number of sectors that the file occupies; 0 for an empty file.
    std::uint32_t Sectors() const { return static_cast<std::uint32_t>(SectorsFor(size)); }
    /// Last sector; an empty file has its first sector only.
    std::uint32_t Last() const { return start + std::max(Sectors(), 1U) - 1; }
    /// Whether the layout has a line for it.
    bool IsListed() const { return !path.empty(); }
};

}  // namespace vantrel
