// Checks raw sectors bit by bit, straight from the polynomials of the standards. It shares no code and no table with
// the program's encoder.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vantrel::test {

/// What is wrong with the 2352 bytes as sector `number` of an image (ECMA-130: sync, address from 00:02:00, mode, EDC,
/// P and Q parity; Mode 1, and Mode 2 Form 1 of CD-ROM XA); empty when nothing is.
std::string FaultOfRawSector(std::span<const std::uint8_t> sector, std::uint32_t number);

/// The first fault of an image of raw sectors, with its sector number; empty when there is none.
std::string FaultOfRawImage(std::span<const std::uint8_t> image);

}  // namespace vantrel::test
