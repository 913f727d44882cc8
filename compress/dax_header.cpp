#include "compress/dax_header.h"

#include <algorithm>

#include "files/byte_order.h"

namespace vantrel {

namespace {

constexpr std::size_t kMagicOffset = 0;
constexpr std::size_t kImageSizeOffset = 4;
constexpr std::size_t kVersionOffset = 8;
constexpr std::size_t kAreaCountOffset = 12;

}  // namespace

std::array<std::uint8_t, DaxHeader::kSize> DaxHeader::Encode() const {
    std::array<std::uint8_t, kSize> bytes = {};
    std::ranges::copy(Le32(magic), bytes.begin() + kMagicOffset);
    std::ranges::copy(Le32(image_size), bytes.begin() + kImageSizeOffset);
    std::ranges::copy(Le32(version), bytes.begin() + kVersionOffset);
    std::ranges::copy(Le32(area_count), bytes.begin() + kAreaCountOffset);
    return bytes;
}

DaxHeader DaxHeader::Decode(std::span<const std::uint8_t, kSize> bytes) {
    DaxHeader header;
    header.magic = LoadLe32(bytes.subspan<kMagicOffset, 4>());
    header.image_size = LoadLe32(bytes.subspan<kImageSizeOffset, 4>());
    header.version = LoadLe32(bytes.subspan<kVersionOffset, 4>());
    header.area_count = LoadLe32(bytes.subspan<kAreaCountOffset, 4>());
    return header;
}

}  // namespace vantrel
