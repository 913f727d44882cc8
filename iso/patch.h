// A change to the structures of an image.
#pragma once

#include <cstdint>
#include <vector>

namespace vantrel {

struct SSectorPatch {
    std::int64_t position = 0;        ///< byte position in the image
    std::vector<std::uint8_t> bytes;  ///< replace those of the image
};

}  // namespace vantrel
