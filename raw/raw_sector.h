// The layout of the 2352-byte sectors of raw CD images, for all readers and writers of such images.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "iso/iso9660.h"

namespace vantrel {

/// A whole sector as recorded on the disc, including the sync field (ECMA-130, clause 14).
inline constexpr std::size_t kRawSectorSize = 2352;
/// The user data of a Mode 1 or Mode 2 Form 1 sector: one sector of a plain image.
inline constexpr auto kUserDataSize = static_cast<std::size_t>(kSectorSize);

inline constexpr std::size_t kSyncOffset = 0;
inline constexpr std::array<std::uint8_t, 12> kSync = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                       0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
/// Minute, second and frame in BCD, then the mode.
inline constexpr std::size_t kAddressOffset = 12;
inline constexpr std::size_t kAddressSize = 3;
inline constexpr std::size_t kModeOffset = 15;
inline constexpr std::size_t kHeaderEnd = 16;
inline constexpr std::uint8_t kMode1 = 1;
inline constexpr std::uint8_t kMode2 = 2;

/// Mode 1: user data, EDC of everything before it, eight zero bytes.
inline constexpr std::size_t kMode1DataOffset = 16;
inline constexpr std::size_t kMode1EdcOffset = 2064;

/// Mode 2 Form 1: sub-header twice, user data, EDC of sub-headers and data.
inline constexpr std::size_t kSubHeaderOffset = 16;
inline constexpr std::array<std::uint8_t, 8> kForm1SubHeader = {0, 0, 8, 0, 0, 0, 8, 0};
inline constexpr std::size_t kForm1DataOffset = 24;
inline constexpr std::size_t kForm1EdcOffset = 2072;

inline constexpr std::size_t kEdcSize = 4;
inline constexpr std::size_t kPParityOffset = 2076;
inline constexpr std::size_t kQParityOffset = 2248;

static_assert(kForm1DataOffset + kUserDataSize == kForm1EdcOffset);
static_assert(kMode1DataOffset + kUserDataSize == kMode1EdcOffset);

/// The first sector of an image has the address 00:02:00; 99:59:74 is the last address that BCD can express.
inline constexpr std::uint32_t kFramesPerSecond = 75;
inline constexpr std::uint32_t kSecondsPerMinute = 60;
inline constexpr std::uint32_t kFirstFrame = 2 * kFramesPerSecond;
inline constexpr std::uint32_t kMostRawSectors = 100 * kSecondsPerMinute * kFramesPerSecond - kFirstFrame;

}  // namespace vantrel
