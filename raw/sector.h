// Making raw sectors of user data: Mode 1 and Mode 2 Form 1.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "raw/raw_sector.h"

namespace vantrel {

enum class ESectorMode { Mode1, Mode2Form1 };

/// Minute, second and frame of sector `number` of an image (from 0), in BCD (ECMA-130, 14.2). Numbers from
/// kMostRawSectors on have no address of their own: the minute starts again from 00.
std::array<std::uint8_t, kAddressSize> AddressOfSector(std::uint32_t number);

/// Fills a whole sector: sync, header, sub-header, the user data, EDC and parity (ECMA-130, clause 14 and annex A; for
/// Mode 2 Form 1 the rules of CD-ROM XA: EDC from the sub-header on, parity with the header taken as zero).
void EncodeSector(ESectorMode mode, std::uint32_t number, std::span<const std::uint8_t, kUserDataSize> userData,
                  std::span<std::uint8_t, kRawSectorSize> sector);

}  // namespace vantrel
