// The error detection code of CD-ROM sectors.
#pragma once

#include <cstdint>
#include <span>

namespace vantrel {

/// The EDC of the bytes: the CRC of ECMA-130, 14.3, with the polynomial (x^16 + x^15 + x^2 + 1)(x^16 + x^2 + x + 1),
/// least significant bit first, initial value 0. Sectors store it in little-endian order.
std::uint32_t EdcOf(std::span<const std::uint8_t> bytes);

/// The same without special instructions of the processor. `edc` is the EDC of the preceding bytes.
std::uint32_t EdcByTables(std::span<const std::uint8_t> bytes, std::uint32_t edc = 0);

/// x^32 + x^31 + x^16 + x^15 + x^4 + x^3 + x + 1 without its highest term, in reversed bit order.
inline constexpr std::uint32_t kReversedEdcPolynomial = 0xD8018001U;

}  // namespace vantrel
