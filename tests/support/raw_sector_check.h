// Checks raw sectors bit by bit with the polynomials of the standards. It shares no code or table with the encoder.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vantrel::test {

/// The first fault of 2352 bytes as sector `number` of an image; empty if there is none. Checks sync, address (from
/// 00:02:00), mode, EDC, P and Q parity (ECMA-130) of Mode 1 and of Mode 2 Form 1 (CD-ROM XA).
std::string FaultOfRawSector(std::span<const std::uint8_t> sector, std::uint32_t number);

/// The first fault of an image of raw sectors with its sector number; empty if there is none.
std::string FaultOfRawImage(std::span<const std::uint8_t> image);

}  // namespace vantrel::test
