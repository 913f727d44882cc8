// The few things of a DVD's UDF side (ECMA-167) that an ISO 9660 reader needs: where descriptor tags stand and which
// are of interest.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "files/byte_order.h"
#include "iso/iso9660.h"

namespace vantrel {

/// The beginning of every descriptor: identifier and version of its tag (ECMA-167 3/7.2) as one number.
inline constexpr std::uint32_t kTagFileEntry = 0x20105;  ///< 261, version 2 (ECMA-167 4/14.9)
inline constexpr std::uint16_t kTagAnchor = 2;           ///< anchor volume descriptor pointer (ECMA-167 3/10.2)

/// The sector in which the first anchor stands (ECMA-167 3/8.4.2.1).
inline constexpr std::int64_t kAnchorSector = 256;

/// The tag up to the sector number that ends it: what is the same for a descriptor wherever it is written.
inline constexpr std::size_t kTagHeadSize = 12;
using TagHead = std::array<std::uint8_t, kTagHeadSize>;

/// The mark of a DVD image: "DVD" in the identifier of the implementation (ECMA-167 3/10.1.13, byte 389) of the first
/// descriptor of the volume descriptor sequence in sector 32.
inline constexpr std::int64_t kDvdMarkPosition = 32 * kSectorSize + 389;
static_assert(kDvdMarkPosition == 65925);

/// Whether a sector begins with a file entry.
constexpr bool BeginsFileEntry(std::span<const std::uint8_t, 4> sector) {
    return LoadLe32(sector) == kTagFileEntry;
}

}  // namespace vantrel
