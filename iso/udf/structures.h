// The structures of UDF (ECMA-167 with the limits of OSTA UDF), byte for byte as an image holds them. Numbers are
// arrays of bytes in little-endian order, so that the structures have no padding and can be copied from any address.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "files/byte_order.h"
#include "iso/iso9660.h"

namespace vantrel {

// Identifiers of descriptor tags (ECMA-167 3/7.2.1, 4/7.2.1).
inline constexpr std::uint16_t kTagPrimaryVolume = 1;
inline constexpr std::uint16_t kTagVolumePointer = 3;
inline constexpr std::uint16_t kTagPartition = 5;
inline constexpr std::uint16_t kTagLogicalVolume = 6;
inline constexpr std::uint16_t kTagUnallocatedSpace = 7;
inline constexpr std::uint16_t kTagTerminating = 8;
inline constexpr std::uint16_t kTagIntegrity = 9;
inline constexpr std::uint16_t kTagFileSet = 256;
inline constexpr std::uint16_t kTagFileIdentifier = 257;
inline constexpr std::uint16_t kTagAllocationExtent = 258;
inline constexpr std::uint16_t kTagPlainFileEntry = 261;
inline constexpr std::uint16_t kTagExtendedFileEntry = 266;

/// ECMA-167 3/7.2
struct SDescriptorTag {
    std::array<std::uint8_t, 2> identifier;
    std::array<std::uint8_t, 2> version;
    std::uint8_t checksum;  ///< sum of the tag's other bytes
    std::uint8_t reserved;
    std::array<std::uint8_t, 2> serialNumber;
    std::array<std::uint8_t, 2> crc;        ///< of the bytes behind the tag
    std::array<std::uint8_t, 2> crcLength;  ///< number of them
    std::array<std::uint8_t, 4> location;   ///< sector of the image, or logical block of the partition
};
static_assert(sizeof(SDescriptorTag) == 16);

/// ECMA-167 3/7.1
struct SVolumeExtent {
    std::array<std::uint8_t, 4> length;  ///< bytes
    std::array<std::uint8_t, 4> sector;
};

/// ECMA-167 4/14.14.1. The two high bits of the length are the extent's type.
struct SShortAllocation {
    std::array<std::uint8_t, 4> length;
    std::array<std::uint8_t, 4> block;
};
static_assert(sizeof(SShortAllocation) == 8);

/// ECMA-167 4/14.14.2, with the address of 4/7.1
struct SLongAllocation {
    std::array<std::uint8_t, 4> length;
    std::array<std::uint8_t, 4> block;
    std::array<std::uint8_t, 2> partition;
    std::array<std::uint8_t, 6> implementationUse;
};
static_assert(sizeof(SLongAllocation) == 16);

/// ECMA-167 1/7.4
struct SEntityIdentifier {
    std::uint8_t flags;
    std::array<std::uint8_t, 23> identifier;
    std::array<std::uint8_t, 8> suffix;
};
static_assert(sizeof(SEntityIdentifier) == 32);

/// ECMA-167 3/10.2
struct SAnchorPointer {
    SDescriptorTag tag;
    SVolumeExtent mainSequence;
    SVolumeExtent reserveSequence;
};

/// ECMA-167 3/10.3
struct SVolumePointer {
    SDescriptorTag tag;
    std::array<std::uint8_t, 4> sequenceNumber;
    SVolumeExtent next;
};

/// The beginning of every other descriptor of a volume descriptor sequence. Of two descriptors for the same thing, the
/// one with the higher number prevails (ECMA-167 3/8.4.3).
struct SSequenceDescriptor {
    SDescriptorTag tag;
    std::array<std::uint8_t, 4> sequenceNumber;
};

/// ECMA-167 3/10.5, with the partition header descriptor of 4/14.3
struct SPartitionDescriptor {
    SDescriptorTag tag;
    std::array<std::uint8_t, 4> sequenceNumber;
    std::array<std::uint8_t, 2> flags;
    std::array<std::uint8_t, 2> number;
    SEntityIdentifier contents;
    /// Unallocated space table and bitmap, partition integrity table, freed space table and bitmap.
    std::array<SShortAllocation, 5> spaceTables;
    std::array<std::uint8_t, 88> reserved;
    std::array<std::uint8_t, 4> accessType;
    std::array<std::uint8_t, 4> start;    ///< sector
    std::array<std::uint8_t, 4> sectors;  ///< number of them
};
static_assert(offsetof(SPartitionDescriptor, start) == 188);
static_assert(offsetof(SPartitionDescriptor, sectors) == 192);

/// ECMA-167 3/10.6; the partition maps follow.
struct SLogicalVolumeDescriptor {
    SDescriptorTag tag;
    std::array<std::uint8_t, 4> sequenceNumber;
    std::array<std::uint8_t, 64> characterSet;
    std::array<std::uint8_t, 128> identifier;
    std::array<std::uint8_t, 4> blockSize;
    SEntityIdentifier domain;
    SLongAllocation fileSet;  ///< the extent of the file set descriptor
    std::array<std::uint8_t, 4> mapTableLength;
    std::array<std::uint8_t, 4> mapCount;
    SEntityIdentifier implementation;
    std::array<std::uint8_t, 128> implementationUse;
    SVolumeExtent integritySequence;
};
static_assert(sizeof(SLogicalVolumeDescriptor) == 440);
static_assert(offsetof(SLogicalVolumeDescriptor, blockSize) == 212);
static_assert(offsetof(SLogicalVolumeDescriptor, integritySequence) == 432);

/// The partition map of a plain partition (ECMA-167 3/10.7.2).
struct SPartitionMap {
    std::uint8_t type;
    std::uint8_t length;
    std::array<std::uint8_t, 2> volumeSequenceNumber;
    std::array<std::uint8_t, 2> partitionNumber;
};
inline constexpr std::uint8_t kMapPlain = 1;
/// Maps of this type have an entity identifier at byte 4 (OSTA UDF 2.2.8 to 2.2.10).
inline constexpr std::uint8_t kMapByIdentifier = 2;

/// ECMA-167 3/10.10; for each partition, its free space and its size follow.
struct SIntegrityDescriptor {
    SDescriptorTag tag;
    std::array<std::uint8_t, 12> recordingTime;
    std::array<std::uint8_t, 4> type;
    SVolumeExtent next;
    std::array<std::uint8_t, 32> contentsUse;
    std::array<std::uint8_t, 4> partitions;
    std::array<std::uint8_t, 4> implementationUseLength;
};
static_assert(sizeof(SIntegrityDescriptor) == 80);

/// ECMA-167 4/14.1
struct SFileSetDescriptor {
    std::array<std::uint8_t, 400> unused;  ///< tag, date, numbers and identifiers
    SLongAllocation root;                  ///< file entry of the root directory
    SEntityIdentifier domain;
    SLongAllocation next;  ///< extent with a further file set descriptor
    SLongAllocation streams;
};
static_assert(offsetof(SFileSetDescriptor, next) == 448);

/// ECMA-167 4/14.6
struct SIcbTag {
    std::array<std::uint8_t, 4> priorEntries;
    std::array<std::uint8_t, 2> strategy;
    std::array<std::uint8_t, 2> strategyParameter;
    std::array<std::uint8_t, 2> mostEntries;
    std::uint8_t reserved;
    std::uint8_t fileType;
    std::array<std::uint8_t, 6> parent;
    std::array<std::uint8_t, 2> flags;
};
static_assert(sizeof(SIcbTag) == 20);

inline constexpr std::uint16_t kStrategyPlain = 4;  ///< one entry, which is never superseded
inline constexpr std::uint8_t kFileTypeDirectory = 4;

/// The low bits of SIcbTag::flags: what the allocation descriptors of the entry are (ECMA-167 4/14.6.8).
enum class EAllocation : std::uint8_t { Short = 0, Long = 1, Extended = 2, Embedded = 3 };
inline constexpr std::uint8_t kAllocationMask = 7;

/// ECMA-167 4/14.9; extended attributes and allocation descriptors follow.
struct SFileEntry {
    SDescriptorTag tag;
    SIcbTag icb;
    std::array<std::uint8_t, 20> owner;  ///< user, group, permissions, link count, record format
    std::array<std::uint8_t, 8> informationLength;
    std::array<std::uint8_t, 8> blocksRecorded;
    std::array<std::uint8_t, 36> dates;
    std::array<std::uint8_t, 4> checkpoint;
    SLongAllocation attributes;  ///< file entry of extended attributes that are stored elsewhere
    SEntityIdentifier implementation;
    std::array<std::uint8_t, 8> uniqueId;
    std::array<std::uint8_t, 4> attributesLength;
    std::array<std::uint8_t, 4> allocationLength;
};
static_assert(sizeof(SFileEntry) == 176);
static_assert(offsetof(SFileEntry, informationLength) == 56);

/// ECMA-167 4/14.17; extended attributes and allocation descriptors follow.
struct SExtendedFileEntry {
    SDescriptorTag tag;
    SIcbTag icb;
    std::array<std::uint8_t, 20> owner;
    std::array<std::uint8_t, 8> informationLength;
    std::array<std::uint8_t, 8> objectSize;  ///< information length of the file and its streams
    std::array<std::uint8_t, 8> blocksRecorded;
    std::array<std::uint8_t, 48> dates;
    std::array<std::uint8_t, 8> checkpoint;
    SLongAllocation attributes;
    SLongAllocation streams;  ///< file entry of the directory of the file's streams
    SEntityIdentifier implementation;
    std::array<std::uint8_t, 8> uniqueId;
    std::array<std::uint8_t, 4> attributesLength;
    std::array<std::uint8_t, 4> allocationLength;
};
static_assert(sizeof(SExtendedFileEntry) == 216);
static_assert(offsetof(SExtendedFileEntry, attributes) == 136);

/// ECMA-167 4/14.5; allocation descriptors follow.
struct SAllocationExtent {
    SDescriptorTag tag;
    std::array<std::uint8_t, 4> previous;
    std::array<std::uint8_t, 4> length;  ///< bytes of the allocation descriptors
};
static_assert(sizeof(SAllocationExtent) == 24);

/// ECMA-167 4/14.4; implementation use and name follow, padded to a multiple of 4 bytes.
struct SFileIdentifier {
    SDescriptorTag tag;
    std::array<std::uint8_t, 2> version;
    std::uint8_t characteristics;
    std::uint8_t nameLength;
    SLongAllocation entry;
    std::array<std::uint8_t, 2> implementationUseLength;
};
static_assert(sizeof(SFileIdentifier) == 38);

// Bits of SFileIdentifier::characteristics (ECMA-167 4/14.4.3).
inline constexpr std::uint8_t kIdentifiesDirectory = 2;
inline constexpr std::uint8_t kIdentifiesDeleted = 4;
inline constexpr std::uint8_t kIdentifiesParent = 8;

/// The two high bits of the length of an allocation descriptor (ECMA-167 4/14.14.1.1).
enum class EExtentType : std::uint8_t { Recorded = 0, NotRecorded = 1, NotAllocated = 2, Continuation = 3 };
inline constexpr std::uint32_t kExtentLengthBits = 30;

/// The largest extent of one allocation descriptor that another one can follow: whole blocks.
inline constexpr std::int64_t kLargestExtent = (std::int64_t{1} << kExtentLengthBits) - kSectorSize;

/// The structure that begins `bytes`, which must hold all of it.
template <typename Structure>
Structure StructureAt(std::span<const std::uint8_t> bytes) {
    std::array<std::uint8_t, sizeof(Structure)> copy = {};
    std::copy_n(bytes.begin(), copy.size(), copy.begin());
    return std::bit_cast<Structure>(copy);
}

template <typename Structure>
void Store(std::span<std::uint8_t> bytes, const Structure& structure) {
    const auto copy = std::bit_cast<std::array<std::uint8_t, sizeof(Structure)>>(structure);
    std::copy(copy.begin(), copy.end(), bytes.begin());
}

}  // namespace vantrel
