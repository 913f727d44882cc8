// An area of an image that need not begin at a sector.
#pragma once

#include <cstdint>

namespace vantrel {

/// An area of an image, in bytes.
struct SImageArea {
    std::int64_t position = 0;
    std::int64_t length = 0;

    std::int64_t End() const { return position + length; }
    bool operator==(const SImageArea&) const = default;
};

}  // namespace vantrel
