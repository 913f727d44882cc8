// The structures of ISO 9660 (ECMA-119), byte for byte as an image holds them. Numbers are arrays of bytes, so that the
// structures have no padding and can be copied from any address.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "files/byte_order.h"

namespace vantrel {

/// Bytes of user data in a sector, which is also the logical block size of every supported image.
inline constexpr std::int64_t kSectorSize = 2048;

/// Number of sectors that hold `bytes`, rounded up.
constexpr std::int64_t SectorsFor(std::int64_t bytes) {
    return (bytes + kSectorSize - 1) / kSectorSize;
}

/// Sectors from this one on (32 GiB) exist on no disc. Files that name one are refused, because an image that reaches
/// it would be zeros until the disk is full.
inline constexpr std::uint32_t kSectorLimit = 1U << 24U;

/// Sectors of the postgap behind the data track of a CD: two seconds (ECMA-130 20.2).
inline constexpr std::int64_t kPostgapSectors = 150;

/// Bytes of the longest path that is read; ECMA-119 6.8.2.1 allows 255.
inline constexpr std::size_t kLongestPath = 2000;

/// A 32-bit number in both byte orders (ECMA-119 7.3.3). Readers use the little-endian half.
struct SBothOrder32 {
    std::array<std::uint8_t, 4> little;
    std::array<std::uint8_t, 4> big;

    std::uint32_t Value() const { return LoadLe32(little); }
};
static_assert(sizeof(SBothOrder32) == 8);

/// A 16-bit number in both byte orders (ECMA-119 7.2.3).
struct SBothOrder16 {
    std::array<std::uint8_t, 2> little;
    std::array<std::uint8_t, 2> big;
};
static_assert(sizeof(SBothOrder16) == 4);

/// The fixed part of a directory record (ECMA-119 9.1); the name follows.
struct SDirectoryRecord {
    std::uint8_t length;  ///< of the whole record; 0 where a sector has no further record
    std::uint8_t extendedAttributeLength;
    SBothOrder32 extentLocation;  ///< first sector
    SBothOrder32 dataLength;      ///< bytes
    std::array<std::uint8_t, 7> recordingDate;
    std::uint8_t flags;
    std::uint8_t fileUnitSize;
    std::uint8_t interleaveGap;
    SBothOrder16 volumeSequenceNumber;
    std::uint8_t nameLength;
};
static_assert(sizeof(SDirectoryRecord) == 33);
static_assert(offsetof(SDirectoryRecord, extentLocation) == 2);
static_assert(offsetof(SDirectoryRecord, dataLength) == 10);
static_assert(offsetof(SDirectoryRecord, flags) == 25);
static_assert(offsetof(SDirectoryRecord, nameLength) == 32);

/// Values of SDirectoryRecord::flags (ECMA-119 9.1.6).
inline constexpr std::uint8_t kFileFlagsPlain = 0;
inline constexpr std::uint8_t kFileFlagHidden = 1;
inline constexpr std::uint8_t kFileFlagDirectory = 2;
inline constexpr std::uint8_t kFileFlagAssociated = 4;
inline constexpr std::uint8_t kFileFlagProtected = 16;
inline constexpr std::uint8_t kFileFlagContinued = 128;  ///< the file has a further extent, in the next record

/// The shortest record: a name of one character.
inline constexpr std::size_t kShortestDirectoryRecord = 34;

/// No record starts at this offset of a sector or behind it, because records never cross a sector (ECMA-119 6.8.1.1).
inline constexpr std::size_t kDirectoryRecordLimit = 2015;

/// Separates a file's name from its version (ECMA-119 7.5.1).
inline constexpr char kVersionSeparator = ';';

/// The fixed part of a path table record (ECMA-119 9.4); the name follows, padded to an even length. This is type L,
/// whose numbers are little-endian.
struct SPathTableRecord {
    std::uint8_t nameLength;  ///< 0 behind the last record
    std::uint8_t extendedAttributeLength;
    std::array<std::uint8_t, 4> extentLocation;
    std::array<std::uint8_t, 2> parentNumber;  ///< from 1, which is the root
};
static_assert(sizeof(SPathTableRecord) == 8);

/// The primary volume descriptor (ECMA-119 8.4), which is sector 16.
struct SPrimaryVolumeDescriptor {
    std::uint8_t type;
    std::array<std::uint8_t, 5> standardIdentifier;
    std::uint8_t version;
    std::uint8_t unused7;
    std::array<std::uint8_t, 32> systemIdentifier;
    std::array<std::uint8_t, 32> volumeIdentifier;
    std::array<std::uint8_t, 8> unused72;
    SBothOrder32 volumeSpaceSize;  ///< sectors
    std::array<std::uint8_t, 32> unused88;
    SBothOrder16 volumeSetSize;
    SBothOrder16 volumeSequenceNumber;
    SBothOrder16 logicalBlockSize;
    SBothOrder32 pathTableSize;                              ///< bytes
    std::array<std::uint8_t, 4> pathTableLocation;           ///< type L
    std::array<std::uint8_t, 4> optionalPathTableLocation;   ///< type L, 0 when there is none
    std::array<std::uint8_t, 4> pathTableLocationM;          ///< type M, big-endian
    std::array<std::uint8_t, 4> optionalPathTableLocationM;  ///< type M, big-endian, 0 when there is none
    SDirectoryRecord rootRecord;
    std::uint8_t rootName;
    std::array<std::uint8_t, 128> volumeSetIdentifier;
    std::array<std::uint8_t, 128> publisherIdentifier;
    std::array<std::uint8_t, 128> dataPreparerIdentifier;
    std::array<std::uint8_t, 128> applicationIdentifier;
    std::array<std::uint8_t, 37> copyrightFileIdentifier;
    std::array<std::uint8_t, 37> abstractFileIdentifier;
    std::array<std::uint8_t, 37> bibliographicFileIdentifier;
    std::array<std::uint8_t, 17> creationDate;
    std::array<std::uint8_t, 17> modificationDate;
    std::array<std::uint8_t, 17> expirationDate;
    std::array<std::uint8_t, 17> effectiveDate;
    std::uint8_t fileStructureVersion;
    std::uint8_t unused882;
    std::array<std::uint8_t, 512> applicationUse;
    std::array<std::uint8_t, 653> reserved;
};
static_assert(sizeof(SPrimaryVolumeDescriptor) == kSectorSize);
static_assert(offsetof(SPrimaryVolumeDescriptor, volumeSpaceSize) == 80);
static_assert(offsetof(SPrimaryVolumeDescriptor, pathTableSize) == 132);
static_assert(offsetof(SPrimaryVolumeDescriptor, pathTableLocation) == 140);
static_assert(offsetof(SPrimaryVolumeDescriptor, optionalPathTableLocation) == 144);
static_assert(offsetof(SPrimaryVolumeDescriptor, rootRecord) == 156);
static_assert(offsetof(SPrimaryVolumeDescriptor, applicationIdentifier) == 574);
static_assert(offsetof(SPrimaryVolumeDescriptor, applicationUse) == 883);

/// Byte positions in an image: of the primary volume descriptor, and of fields in it.
inline constexpr std::int64_t kPrimaryVolumePosition = 16 * kSectorSize;
inline constexpr std::int64_t kVolumeSizePosition =
    kPrimaryVolumePosition + static_cast<std::int64_t>(offsetof(SPrimaryVolumeDescriptor, volumeSpaceSize));
inline constexpr std::int64_t kApplicationIdentifierPosition =
    kPrimaryVolumePosition + static_cast<std::int64_t>(offsetof(SPrimaryVolumeDescriptor, applicationIdentifier));

/// The CD-ROM XA mark "CD-XA001" stands at byte 1024 of the primary volume descriptor, in its application use field.
inline constexpr std::size_t kXaMarkInApplicationUse = 1024 - offsetof(SPrimaryVolumeDescriptor, applicationUse);
static_assert(kXaMarkInApplicationUse == 141);
inline constexpr std::int64_t kXaMarkPosition = kPrimaryVolumePosition + 1024;

}  // namespace vantrel
