// The error detection code of CD-ROM sectors.
#pragma once

#include <cstdint>
#include <span>

namespace vantrel {

/// The EDC of the bytes: the CRC of ECMA-130, 14.3, with the polynomial (x^16 + x^15 + x^2 + 1)(x^16 + x^2 + x + 1),
/// least significant bit first, starting from zero. In a sector it stands in little-endian order.
std::uint32_t EdcOf(std::span<const std::uint8_t> bytes);

/// The same without what only some processors have, going on from the EDC of what comes before.
std::uint32_t EdcByTables(std::span<const std::uint8_t> bytes, std::uint32_t edc = 0);

/// x^32 + x^31 + x^16 + x^15 + x^4 + x^3 + x + 1 without its highest term, bits in reverse order.
inline constexpr std::uint32_t kReversedEdcPolynomial = 0xD8018001U;

}  // namespace vantrel
