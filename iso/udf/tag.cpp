#include "iso/udf/tag.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

#include "iso/udf/structures.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::size_t kTagSize = sizeof(SDescriptorTag);

constexpr std::array<std::uint16_t, 256> MakeCrcTable() {
    constexpr std::uint32_t kPolynomial = 0x1021;
    std::array<std::uint16_t, 256> table = {};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t crc = byte << 8U;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc << 1U) ^ ((crc & 0x8000U) != 0 ? kPolynomial : 0U);
        }
        table[byte] = static_cast<std::uint16_t>(crc);
    }
    return table;
}

constexpr std::array<std::uint16_t, 256> kCrcTable = MakeCrcTable();

SDescriptorTag TagOf(std::span<const std::uint8_t> bytes) {
    std::array<std::uint8_t, kTagSize> tag = {};
    std::copy_n(bytes.begin(), std::min(kTagSize, bytes.size()), tag.begin());
    return std::bit_cast<SDescriptorTag>(tag);
}

std::uint8_t ChecksumOf(SDescriptorTag tag) {
    tag.checksum = 0;
    const auto bytes = std::bit_cast<std::array<std::uint8_t, kTagSize>>(tag);
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

}  // namespace

std::uint16_t DescriptorCrc(std::span<const std::uint8_t> bytes) {
    std::uint32_t crc = 0;
    for (const std::uint8_t byte : bytes) {
        crc = (crc << 8U & 0xFFFFU) ^ kCrcTable[crc >> 8U ^ byte];
    }
    return static_cast<std::uint16_t>(crc);
}

std::uint16_t TagIdentifier(std::span<const std::uint8_t> bytes) {
    return LoadLe16(TagOf(bytes).identifier);
}

std::string TagProblem(std::span<const std::uint8_t> bytes, std::uint16_t identifier, std::uint32_t location) {
    const SDescriptorTag tag = TagOf(bytes);
    if (bytes.size() < kTagSize || LoadLe16(tag.identifier) != identifier) {
        return Format("no descriptor with tag %u is there", unsigned{identifier});
    }
    if (tag.checksum != ChecksumOf(tag)) {
        return "the checksum of the descriptor's tag is wrong";
    }
    const std::size_t crcLength = LoadLe16(tag.crcLength);
    if (crcLength > bytes.size() - kTagSize || LoadLe16(tag.crc) != DescriptorCrc(bytes.subspan(kTagSize, crcLength))) {
        return "the descriptor's CRC is wrong";
    }
    if (LoadLe32(tag.location) != location) {
        return Format("the descriptor's tag says location %u instead of %u", LoadLe32(tag.location), location);
    }
    return {};
}

void SealTag(std::span<std::uint8_t> bytes, std::uint32_t location) {
    SDescriptorTag tag = TagOf(bytes);
    const auto covered = bytes.subspan(kTagSize);
    tag.crcLength = Le16(static_cast<std::uint16_t>(covered.size()));
    tag.crc = Le16(DescriptorCrc(covered));
    tag.location = Le32(location);
    tag.checksum = ChecksumOf(tag);
    const auto sealed = std::bit_cast<std::array<std::uint8_t, kTagSize>>(tag);
    std::copy(sealed.begin(), sealed.end(), bytes.begin());
}

}  // namespace vantrel
