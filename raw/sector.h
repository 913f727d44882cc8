// Encodes user data as raw sectors of Mode 1 or Mode 2 Form 1.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "raw/raw_sector.h"

namespace vantrel {

enum class ESectorMode { Mode1, Mode2Form1 };

/// Minute, second and frame of sector `number` of an image (from 0), in BCD (ECMA-130, 14.2). From kMostRawSectors on
/// the minutes start again at 00.
std::array<std::uint8_t, kAddressSize> AddressOfSector(std::uint32_t number);

/// Fills a whole sector: sync, header, sub-header, user data, EDC and parity (ECMA-130, clause 14 and annex A). Mode 2
/// Form 1 follows CD-ROM XA: the EDC starts at the sub-header, and the header counts as zero for the parity.
void EncodeSector(ESectorMode mode, std::uint32_t number, std::span<const std::uint8_t, kUserDataSize> userData,
                  std::span<std::uint8_t, kRawSectorSize> sector);

}  // namespace vantrel
