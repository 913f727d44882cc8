#include "compress/cso_header.h"

#include <algorithm>

#include "files/byte_order.h"

namespace vantrel {

std::array<std::uint8_t, CsoHeader::kSize> CsoHeader::Encode() const {
    std::array<std::uint8_t, kSize> bytes = {};
    const auto put = [&bytes](std::size_t offset, const auto& field) {
        std::copy(field.begin(), field.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    };
    put(0, magic);
    put(4, Le32(header_size));
    put(8, Le32(static_cast<std::uint32_t>(total_bytes)));
    put(12, Le32(static_cast<std::uint32_t>(total_bytes >> 32U)));
    put(16, Le32(block_size));
    bytes[20] = version;
    bytes[21] = align;
    put(22, reserved);
    return bytes;
}

CsoHeader CsoHeader::Decode(std::span<const std::uint8_t, kSize> bytes) {
    CsoHeader header;
    std::copy_n(bytes.begin(), header.magic.size(), header.magic.begin());
    header.header_size = LoadLe32(bytes.subspan<4, 4>());
    header.total_bytes = LoadLe64(bytes.subspan<8, 8>());
    header.block_size = LoadLe32(bytes.subspan<16, 4>());
    header.version = bytes[20];
    header.align = bytes[21];
    header.reserved = {bytes[22], bytes[23]};
    return header;
}

}  // namespace vantrel
