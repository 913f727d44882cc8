// The error correction parity of CD-ROM sectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "raw/raw_sector.h"

namespace vantrel {

/// The part of a sector that the parity covers and is stored in: all but the sync field.
inline constexpr std::size_t kParityAreaSize = kRawSectorSize - kAddressOffset;

/// Computes P and Q (ECMA-130, annex A) of the first 2064 bytes of the area and stores their 172 and 104 bytes behind
/// them. For Mode 2 Form 1, the first four bytes (the header) must be zero during the call.
void PutParity(std::span<std::uint8_t, kParityAreaSize> area);

}  // namespace vantrel
