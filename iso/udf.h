// The parts of UDF (ECMA-167) that an ISO 9660 reader of DVD images needs: descriptor tags and their positions.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "files/byte_order.h"
#include "iso/iso9660.h"

namespace vantrel {

/// The first four bytes of a descriptor: identifier and version of its tag (ECMA-167 3/7.2) as one number.
inline constexpr std::uint32_t kTagFileEntry = 0x20105;  ///< 261, version 2 (ECMA-167 4/14.9)
inline constexpr std::uint16_t kTagAnchor = 2;           ///< anchor volume descriptor pointer (ECMA-167 3/10.2)

/// The sector of the first anchor (ECMA-167 3/8.4.2.1).
inline constexpr std::int64_t kAnchorSector = 256;

/// The tag without the sector number that ends it; these bytes do not depend on the descriptor's position.
inline constexpr std::size_t kTagHeadSize = 12;
using TagHead = std::array<std::uint8_t, kTagHeadSize>;

/// The mark of a DVD image: "DVD" in the identifier of the implementation (ECMA-167 3/10.1.13, byte 389) of the first
/// descriptor of the volume descriptor sequence in sector 32.
inline constexpr std::int64_t kDvdMarkPosition = 32 * kSectorSize + 389;
static_assert(kDvdMarkPosition == 65925);

/// Whether a sector starts with a file entry.
constexpr bool BeginsFileEntry(std::span<const std::uint8_t, 4> sector) {
    return LoadLe32(sector) == kTagFileEntry;
}

}  // namespace vantrel
