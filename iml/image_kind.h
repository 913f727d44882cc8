// The kind of a disc image as the rebuild and the postgap commands tell it: from one character of the primary volume
// descriptor's system identifier (ECMA-119, 8.4.5) and one of the CD-XA mark in its application use field.
#pragma once

#include <cstdint>

namespace vantrel {

inline constexpr std::int64_t kSystemIdentifierSecond = 0x8009;  ///< Position of its second character in an image.
inline constexpr std::int64_t kXaMarkFirst = 0x8400;             ///< Position of the mark's first character.

enum class ImageKind : std::int32_t { Dvd = 0, Cd = 1, Umd = 3 };

/// The kind for the two characters; everything that is neither CD nor UMD counts as DVD.
constexpr ImageKind ImageKindOf(std::uint8_t systemSecond, std::uint8_t markFirst) {
    if (markFirst != 'C') {
        return ImageKind::Dvd;
    }
    if (systemSecond == 'S') {
        return ImageKind::Umd;
    }
    return systemSecond == 'L' ? ImageKind::Cd : ImageKind::Dvd;
}

}  // namespace vantrel
