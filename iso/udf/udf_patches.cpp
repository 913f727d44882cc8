#include "iso/udf/udf_patches.h"

#include <algorithm>
#include <cstddef>

#include "files/refused.h"
#include "iso/udf/file_entry.h"
#include "iso/udf/partition.h"
#include "iso/udf/tag.h"
#include "iso/udf/volume_structure.h"
#include "operation/text.h"

namespace vantrel {

namespace {

UdfBlock ReadSector(CByteSource& image, std::uint32_t sector) {
    UdfBlock bytes = {};
    image.ReadAt(sector * kSectorSize, bytes);
    return bytes;
}

SSectorPatch PatchOf(std::uint32_t sector, std::span<const std::uint8_t> bytes) {
    return {sector * kSectorSize, {bytes.begin(), bytes.end()}};
}

/// The same descriptor with `added` added to the number at `offset`, and with a valid CRC.
SSectorPatch Lengthened(CByteSource& image, std::uint32_t sector, std::size_t offset, std::uint32_t added) {
    UdfBlock bytes = ReadSector(image, sector);
    const auto number = std::span(bytes).subspan(offset).first<4>();
    Store(number, Le32(LoadLe32(number) + added));
    const std::size_t size = sizeof(SDescriptorTag) + LoadLe16(StructureAt<SDescriptorTag>(bytes).crcLength);
    const auto descriptor = std::span(bytes).first(std::max(size, offset + number.size()));
    SealTag(descriptor, sector);
    return PatchOf(sector, descriptor);
}

/// The closing anchors, `added` sectors later.
void MoveAnchors(CByteSource& image, const SUdfVolume& volume, std::uint32_t added,
                 std::vector<SSectorPatch>& patches) {
    const auto first = volume.anchors.end() - static_cast<std::ptrdiff_t>(volume.closingAnchors);
    for (auto anchor = first; anchor != volume.anchors.end(); ++anchor) {
        UdfBlock bytes = ReadSector(image, *anchor);
        const std::size_t size = sizeof(SDescriptorTag) + LoadLe16(StructureAt<SDescriptorTag>(bytes).crcLength);
        SealTag(std::span(bytes).first(size), *anchor + added);
        patches.push_back(PatchOf(*anchor + added, bytes));
    }
}

}  // namespace

std::vector<SSectorPatch> PatchUdfFile(CByteSource& image, const SUdfVolume& volume, const SUdfFile& file,
                                       std::uint32_t sector, std::int64_t size) {
    if (size > 0 && sector < volume.partitionStart) {
        throw CRefused(Format("\"/%s\" cannot be at sector %u, because the UDF partition starts at %u",
                              file.path.c_str(), sector, volume.partitionStart));
    }
    UdfBlock bytes = ReadSector(image, file.entrySector);
    try {
        const std::uint32_t location = file.entrySector - volume.partitionStart;
        const std::size_t changed = SetContent(bytes, location, sector - volume.partitionStart, size);
        return {PatchOf(file.entrySector, std::span(bytes).first(changed))};
    } catch (const CRefused& refused) {
        throw CRefused(Format("the UDF file entry of \"/%s\" in sector %u: %s", file.path.c_str(), file.entrySector,
                              refused.what()));
    }
}

std::vector<SSectorPatch> PatchUdfLength(CByteSource& image, const SUdfVolume& volume, std::uint32_t added) {
    std::vector<SSectorPatch> patches;
    if (added == 0) {
        return patches;
    }
    const std::optional<SVolumeStructure> structure = ReadVolumeStructure(image);
    if (!structure) {
        throw CRefused("the UDF volume can no longer be read");
    }
    if (structure->hasSpaceTables) {
        throw CRefused("the UDF partition has tables of its free space and cannot be lengthened");
    }
    for (const std::uint32_t sector : structure->partitionDescriptors) {
        patches.push_back(Lengthened(image, sector, offsetof(SPartitionDescriptor, sectors), added));
    }
    for (const std::uint32_t sector : structure->integrityDescriptors) {
        // Behind the header, there is one free space number and one size: there is one partition.
        patches.push_back(Lengthened(image, sector, sizeof(SIntegrityDescriptor) + 4, added));
    }
    MoveAnchors(image, volume, added, patches);
    return patches;
}

}  // namespace vantrel
