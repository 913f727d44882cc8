// The volume space size of an image: how it is corrected when the image's length has changed.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "files/byte_order.h"

namespace vantrel {

inline constexpr std::int64_t kImageSector = 2048;

/// Position of the volume space size in an image (ECMA-119, 8.4.8, in the descriptor of sector 16).
inline constexpr std::int64_t kVolumeSizePosition = 0x8050;

/// The field for an image of `length` bytes: its whole sectors in both byte orders (ECMA-119, 7.3.3).
inline std::array<std::uint8_t, 8> VolumeSizeField(std::int64_t length) {
    const auto sectors = static_cast<std::uint32_t>(length / kImageSector);
    const auto little = Le32(sectors);
    const auto big = Be32(sectors);
    std::array<std::uint8_t, 8> field = {};
    std::copy(little.begin(), little.end(), field.begin());
    std::copy(big.begin(), big.end(), field.begin() + little.size());
    return field;
}

}  // namespace vantrel
