// The kind and the size of an image, from its primary volume descriptor.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "iso/iso9660.h"
#include "iso/udf.h"

namespace vantrel {

/// The mark by which an export accepts an image. The standard identifier "CD001" is deliberately not tested, because
/// readable images without it are in circulation.
enum class EImageMark {
    None,
    Cd,   ///< "CD-" at byte 33792: PlayStation 2 CD and PSP UMD
    Dvd,  ///< "DVD" at byte 65925
};

EImageMark ReadImageMark(CByteSource& image);

/// The medium of an image.
enum class ImageKind : std::int32_t { Unknown = -1, Dvd = 0, Cd = 1, Umd = 3 };

// Two rules tell the kind of an image. Both look at the first character of the CD-XA mark ('C' on CD and UMD) and at
// one letter that is 'L' on PlayStation 2 and 'S' on PSP discs. They differ in the identifier that supplies the letter
// and in the answer for all other images, because a layout must not name a medium that the image does not have, whereas
// the postgap commands must leave alone whatever is not known to be a CD.

/// The rule of exports and reports: the letter is the second character of the application identifier (byte 33343).
ImageKind KindByApplication(std::uint8_t applicationSecond, std::uint8_t xaMarkFirst);
ImageKind KindByApplication(const SPrimaryVolumeDescriptor& volume);

/// The rule of rebuilds and postgaps: the letter is the second character of the system identifier (byte 32777), and
/// every other image counts as a DVD.
ImageKind KindBySystem(std::uint8_t systemSecond, std::uint8_t xaMarkFirst);
ImageKind KindBySystem(const SPrimaryVolumeDescriptor& volume);

/// The descriptor in sector 16. Bytes beyond the end of the image are zero.
SPrimaryVolumeDescriptor ReadPrimaryVolume(CByteSource& image);

/// The descriptor at a byte position. A supplementary volume descriptor has the same fields (ECMA-119 8.5).
SPrimaryVolumeDescriptor ReadVolume(CByteSource& image, std::int64_t position);

/// Type of supplementary and enhanced volume descriptors (ECMA-119 8.5).
inline constexpr std::uint8_t kSupplementaryVolume = 2;

/// Whether a supplementary volume has Joliet names: its escape sequence is "%/@", "%/C" or "%/E".
bool IsJoliet(const SPrimaryVolumeDescriptor& volume);

/// A volume descriptor and its sector.
struct SVolumeDescriptorAt {
    SPrimaryVolumeDescriptor descriptor;
    std::uint32_t sector;
};

/// The volume descriptor set (ECMA-119 6.7.1): the descriptor in sector 16, and those behind it with the same standard
/// identifier up to the terminator, which is the last one if there is one. At most 64 are read.
std::vector<SVolumeDescriptorAt> ReadVolumeDescriptors(CByteSource& image);

/// A notice if an image of `length` bytes is shorter than its volume; empty if it is not, or if the volume is not
/// marked as ISO 9660 (ECMA-119 8.4.2), because its size means nothing then.
std::string TruncationNotice(const std::string& path, std::int64_t length, const SPrimaryVolumeDescriptor& volume);

/// How the length of a PlayStation 2 CD image fits its volume size, which includes the postgap.
enum class EPostgapState { Complete, Missing, Neither };

/// Both in sectors.
EPostgapState PostgapStateOf(std::int64_t imageSectors, std::int64_t volumeSectors);

/// The first 12 bytes of the anchor in the last sector of the volume, else of the anchor in sector 256, else zeros.
TagHead ReadAnchorTag(CByteSource& image, std::uint32_t volumeSectors);

/// The volume space size for an image of `length` bytes: its whole sectors, in both byte orders (ECMA-119 7.3.3).
std::array<std::uint8_t, sizeof(SBothOrder32)> VolumeSizeField(std::int64_t length);

}  // namespace vantrel
