// A range of an image that holds a file or a part of it.
#pragma once

#include <cstdint>

#include "iso/iso9660.h"

namespace vantrel {

struct SExtent {
    std::uint32_t sector = 0;  ///< first sector
    std::int64_t size = 0;     ///< bytes

    std::int64_t Position() const { return sector * kSectorSize; }
    std::int64_t End() const { return Position() + size; }
    bool operator==(const SExtent&) const = default;
};

}  // namespace vantrel
