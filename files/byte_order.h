// Conversion between numbers and bytes: little-endian, and the big-endian half of ISO 9660's both-byte-order fields.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vantrel {

constexpr std::uint16_t LoadLe16(std::span<const std::uint8_t, 2> bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8U);
}

constexpr std::uint32_t LoadLe32(std::span<const std::uint8_t, 4> bytes) {
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8U |
           static_cast<std::uint32_t>(bytes[2]) << 16U | static_cast<std::uint32_t>(bytes[3]) << 24U;
}

constexpr std::uint32_t LoadBe32(std::span<const std::uint8_t, 4> bytes) {
    return static_cast<std::uint32_t>(bytes[3]) | static_cast<std::uint32_t>(bytes[2]) << 8U |
           static_cast<std::uint32_t>(bytes[1]) << 16U | static_cast<std::uint32_t>(bytes[0]) << 24U;
}

constexpr std::uint64_t LoadLe64(std::span<const std::uint8_t, 8> bytes) {
    return LoadLe32(bytes.first<4>()) | static_cast<std::uint64_t>(LoadLe32(bytes.last<4>())) << 32U;
}

constexpr std::array<std::uint8_t, 2> Le16(std::uint16_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8U)};
}

constexpr std::array<std::uint8_t, 4> Le32(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8U),
            static_cast<std::uint8_t>(value >> 16U), static_cast<std::uint8_t>(value >> 24U)};
}

constexpr std::array<std::uint8_t, 4> Be32(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value >> 24U), static_cast<std::uint8_t>(value >> 16U),
            static_cast<std::uint8_t>(value >> 8U), static_cast<std::uint8_t>(value)};
}

}  // namespace vantrel
