// The error detection code of CD-ROM sectors.
#pragma once

#include <cstdint>
#include <span>

namespace vantrel {

/// The EDC of the bytes: the CRC of ECMA-130, 14.3, with the polynomial (x^16 + x^15 + x^2 + 1)(x^16 + x^2 + x + 1),
/// least significant bit first, starting from zero. In a sector it stands in little-endian order.
std::uint32_t EdcOf(std::span<const std::uint8_t> bytes);

}  // namespace vantrel
