#include "compress/dax_header.h"

#include <algorithm>

#include "files/byte_order.h"

namespace vantrel {

namespace {

constexpr std::size_t kMagicOffset = 0;
constexpr std::size_t kImageSizeOffset = 4;

}  // namespace

std::array<std::uint8_t, DaxHeader::kSize> DaxHeader::Encode() const {
    std::array<std::uint8_t, kSize> bytes = {};
    std::ranges::copy(Le32(magic), bytes.begin() + kMagicOffset);
    std::ranges::copy(Le32(image_size), bytes.begin() + kImageSizeOffset);
    return bytes;
}

DaxHeader DaxHeader::Decode(std::span<const std::uint8_t, kSize> bytes) {
    DaxHeader header;
    header.magic = LoadLe32(bytes.subspan<kMagicOffset, 4>());
    header.image_size = LoadLe32(bytes.subspan<kImageSizeOffset, 4>());
    return header;
}

}  // namespace vantrel
