#include "iso/udf/file_entry.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "files/refused.h"
#include "iso/udf/tag.h"
#include "iso/udf/unsupported.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kLengthMask = (1U << kExtentLengthBits) - 1;

std::uint32_t LengthOf(const SLongAllocation& allocation) {
    return LoadLe32(allocation.length);
}

void CheckIcb(const SIcbTag& icb) {
    if (LoadLe16(icb.strategy) != kStrategyPlain) {
        throw CUnsupportedUdf(Format("entries of strategy %u are not supported", unsigned{LoadLe16(icb.strategy)}));
    }
    const unsigned allocation = icb.flags[0] & kAllocationMask;
    if (allocation == static_cast<unsigned>(EAllocation::Extended)) {
        throw CUnsupportedUdf("extended allocation descriptors are not supported");
    }
    if (allocation > static_cast<unsigned>(EAllocation::Embedded)) {
        throw CRefused(Format("allocation descriptors of kind %u do not exist", allocation));
    }
}

/// The fields that both kinds of entries have, at different places.
template <typename Entry>
SEntryFields FieldsOf(const Entry& entry, std::size_t blockSize) {
    CheckIcb(entry.icb);
    if (LengthOf(entry.attributes) != 0) {
        throw CUnsupportedUdf("extended attributes in an entry of their own are not supported");
    }
    const std::uint64_t size = LoadLe64(entry.informationLength);
    const std::size_t attributes = LoadLe32(entry.attributesLength);
    const std::size_t allocation = LoadLe32(entry.allocationLength);
    if (attributes > blockSize - sizeof(Entry) || allocation > blockSize - sizeof(Entry) - attributes) {
        throw CRefused("the entry is longer than its block");
    }
    // No partition is as long, and sums of positions stay far from overflowing.
    if (size > std::uint64_t{std::numeric_limits<std::uint32_t>::max()} * kSectorSize) {
        throw CRefused(Format("a length of %llu bytes is impossible", static_cast<unsigned long long>(size)));
    }
    return {false,
            entry.icb.fileType == kFileTypeDirectory,
            static_cast<EAllocation>(entry.icb.flags[0] & kAllocationMask),
            static_cast<std::int64_t>(size),
            sizeof(Entry) + attributes,
            allocation};
}

/// The extents of content in adjacent blocks, of the largest size that allocation descriptors can say.
std::vector<SBlockExtent> ExtentsFor(std::uint32_t firstBlock, std::int64_t size) {
    std::vector<SBlockExtent> extents;
    for (std::int64_t done = 0; done < size; done += kLargestExtent) {
        extents.push_back({EExtentType::Recorded, firstBlock + static_cast<std::uint32_t>(done / kSectorSize),
                           static_cast<std::uint32_t>(std::min(size - done, kLargestExtent))});
    }
    return extents;
}

void StoreExtent(std::span<std::uint8_t> bytes, const SBlockExtent& extent, EAllocation kind) {
    if (kind == EAllocation::Long) {
        Store(bytes, SLongAllocation{Le32(extent.length), Le32(extent.block), {}, {}});
    } else {
        Store(bytes, SShortAllocation{Le32(extent.length), Le32(extent.block)});
    }
}

template <typename Entry>
void StoreLengths(std::span<std::uint8_t> block, std::int64_t size, std::size_t allocationLength, EAllocation kind) {
    auto entry = StructureAt<Entry>(block);
    const auto store64 = [](std::array<std::uint8_t, 8>& field, std::int64_t value) {
        const auto bits = static_cast<std::uint64_t>(value);
        Store(std::span<std::uint8_t>(field).first<4>(), Le32(static_cast<std::uint32_t>(bits)));
        Store(std::span<std::uint8_t>(field).last<4>(), Le32(static_cast<std::uint32_t>(bits >> 32U)));
    };
    store64(entry.informationLength, size);
    store64(entry.blocksRecorded, SectorsFor(size));
    if constexpr (std::is_same_v<Entry, SExtendedFileEntry>) {
        store64(entry.objectSize, size);
    }
    entry.allocationLength = Le32(static_cast<std::uint32_t>(allocationLength));
    entry.icb.flags[0] =
        static_cast<std::uint8_t>((entry.icb.flags[0] & ~unsigned{kAllocationMask}) | static_cast<unsigned>(kind));
    Store(block, entry);
}

std::size_t SizeOfAllocation(EAllocation kind) {
    return kind == EAllocation::Long ? sizeof(SLongAllocation) : sizeof(SShortAllocation);
}

}  // namespace

SEntryFields ReadEntryFields(std::span<const std::uint8_t> block, std::uint32_t location) {
    const bool isExtended = TagIdentifier(block) == kTagExtendedFileEntry;
    const std::string problem = TagProblem(block, isExtended ? kTagExtendedFileEntry : kTagPlainFileEntry, location);
    if (!problem.empty()) {
        throw CRefused(problem);
    }
    if (!isExtended) {
        return FieldsOf(StructureAt<SFileEntry>(block), block.size());
    }
    const auto entry = StructureAt<SExtendedFileEntry>(block);
    if (LengthOf(entry.streams) != 0) {
        throw CUnsupportedUdf("named streams are not supported");
    }
    SEntryFields fields = FieldsOf(entry, block.size());
    fields.isExtended = true;
    return fields;
}

std::vector<SBlockExtent> AllocationsOf(std::span<const std::uint8_t> list, EAllocation kind) {
    std::vector<SBlockExtent> extents;
    const std::size_t size = SizeOfAllocation(kind);
    for (; list.size() >= size; list = list.subspan(size)) {
        const auto allocation = StructureAt<SShortAllocation>(list);
        const std::uint32_t length = LoadLe32(allocation.length);
        if ((length & kLengthMask) == 0) {
            break;
        }
        if (kind == EAllocation::Long && LoadLe16(StructureAt<SLongAllocation>(list).partition) != 0) {
            throw CRefused("an extent is in a partition that does not exist");
        }
        extents.push_back(
            {static_cast<EExtentType>(length >> kExtentLengthBits), LoadLe32(allocation.block), length & kLengthMask});
    }
    return extents;
}

std::size_t SetContent(std::span<std::uint8_t> block, std::uint32_t location, std::uint32_t firstBlock,
                       std::int64_t size) {
    const SEntryFields old = ReadEntryFields(block, location);
    const EAllocation kind = old.allocation == EAllocation::Long ? EAllocation::Long : EAllocation::Short;
    const std::vector<SBlockExtent> extents = ExtentsFor(firstBlock, size);
    const std::size_t end = old.allocationStart + extents.size() * SizeOfAllocation(kind);
    if (end > block.size()) {
        throw CRefused(Format("the entry has no room for %zu allocation descriptors", extents.size()));
    }
    const std::size_t oldEnd = old.allocationStart + old.allocationLength;
    std::fill(block.begin() + static_cast<std::ptrdiff_t>(old.allocationStart),
              block.begin() + static_cast<std::ptrdiff_t>(std::max(end, oldEnd)), std::uint8_t{0});
    auto list = block.subspan(old.allocationStart);
    for (const SBlockExtent& extent : extents) {
        StoreExtent(list, extent, kind);
        list = list.subspan(SizeOfAllocation(kind));
    }
    (old.isExtended ? StoreLengths<SExtendedFileEntry> : StoreLengths<SFileEntry>)(block, size,
                                                                                   end - old.allocationStart, kind);
    SealTag(block.first(end), location);
    return std::max(end, oldEnd);
}

}  // namespace vantrel
