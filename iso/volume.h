// What kind of image this is and what its volume descriptor says.
#pragma once

#include <cstdint>
#include <string_view>

#include "files/byte_source.h"
#include "iso/iso9660.h"
#include "iso/udf.h"

namespace vantrel {

/// The mark by which an image is accepted. Nothing else is tested, in particular not the standard identifier: images
/// without it are in circulation and readable.
enum class EImageMark {
    None,
    Cd,   ///< "CD-" at byte 33792: PlayStation 2 CD and PSP UMD
    Dvd,  ///< "DVD" at byte 65925
};

EImageMark ReadImageMark(CByteSource& image);

/// The two bytes that tell the medium apart.
struct SMediaKey {
    std::uint8_t id = 0;   ///< second character of the application identifier (byte 33343)
    std::uint8_t sub = 0;  ///< first character of the CD-ROM XA mark (byte 33792)
};

enum class EMedia { Unknown, Dvd, Cd, Umd };

/// 'L' with 0 is a PlayStation 2 DVD, 'L' with 'C' a PlayStation 2 CD, 'S' with 'C' a PSP UMD.
EMedia MediaOf(const SMediaKey& key);

/// The key as a volume descriptor has it.
SMediaKey MediaKeyOf(const SPrimaryVolumeDescriptor& volume);

/// Sector 16. What the image is too short to have is zero.
SPrimaryVolumeDescriptor ReadPrimaryVolume(CByteSource& image);

/// The first 12 bytes of the anchor in the volume's last sector, or else of the one in sector 256, or else zeros.
TagHead ReadAnchorTag(CByteSource& image, std::uint32_t volumeSectors);

}  // namespace vantrel
