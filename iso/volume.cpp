#include "iso/volume.h"

#include <algorithm>
#include <bit>
#include <string_view>

#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::size_t kMarkSize = 3;
constexpr std::size_t kMostDescriptors = 64;
constexpr std::uint8_t kSetTerminator = 255;

bool HasMark(CByteSource& image, std::int64_t position, std::string_view mark) {
    std::array<std::uint8_t, kMarkSize> bytes = {};
    image.ReadAt(position, bytes);
    return std::equal(bytes.begin(), bytes.end(), mark.begin(), mark.end());
}

std::uint8_t XaMarkFirst(const SPrimaryVolumeDescriptor& volume) {
    return volume.applicationUse[kXaMarkInApplicationUse];
}

}  // namespace

EImageMark ReadImageMark(CByteSource& image) {
    if (HasMark(image, kXaMarkPosition, "CD-")) {
        return EImageMark::Cd;
    }
    return HasMark(image, kDvdMarkPosition, "DVD") ? EImageMark::Dvd : EImageMark::None;
}

ImageKind KindByApplication(std::uint8_t applicationSecond, std::uint8_t xaMarkFirst) {
    if (xaMarkFirst == 'C') {
        return applicationSecond == 'L'   ? ImageKind::Cd
               : applicationSecond == 'S' ? ImageKind::Umd
                                          : ImageKind::Unknown;
    }
    return applicationSecond == 'L' && xaMarkFirst == 0 ? ImageKind::Dvd : ImageKind::Unknown;
}

ImageKind KindByApplication(const SPrimaryVolumeDescriptor& volume) {
    return KindByApplication(volume.applicationIdentifier[1], XaMarkFirst(volume));
}

ImageKind KindBySystem(std::uint8_t systemSecond, std::uint8_t xaMarkFirst) {
    if (xaMarkFirst != 'C') {
        return ImageKind::Dvd;
    }
    return systemSecond == 'L' ? ImageKind::Cd : systemSecond == 'S' ? ImageKind::Umd : ImageKind::Dvd;
}

ImageKind KindBySystem(const SPrimaryVolumeDescriptor& volume) {
    return KindBySystem(volume.systemIdentifier[1], XaMarkFirst(volume));
}

SPrimaryVolumeDescriptor ReadPrimaryVolume(CByteSource& image) {
    return ReadVolume(image, kPrimaryVolumePosition);
}

SPrimaryVolumeDescriptor ReadVolume(CByteSource& image, std::int64_t position) {
    std::array<std::uint8_t, sizeof(SPrimaryVolumeDescriptor)> bytes = {};
    image.ReadAt(position, bytes);
    return std::bit_cast<SPrimaryVolumeDescriptor>(bytes);
}

bool IsJoliet(const SPrimaryVolumeDescriptor& volume) {
    const auto& escape = volume.unused88;
    return escape[0] == '%' && escape[1] == '/' && (escape[2] == '@' || escape[2] == 'C' || escape[2] == 'E');
}

std::vector<SVolumeDescriptorAt> ReadVolumeDescriptors(CByteSource& image) {
    std::vector<SVolumeDescriptorAt> volumes = {{ReadPrimaryVolume(image), kPrimaryVolumePosition / kSectorSize}};
    while (volumes.size() < kMostDescriptors &&
           (volumes.size() == 1 || volumes.back().descriptor.type != kSetTerminator)) {
        const std::uint32_t sector = volumes.back().sector + 1;
        const SPrimaryVolumeDescriptor next = ReadVolume(image, sector * kSectorSize);
        if (next.standardIdentifier != volumes.front().descriptor.standardIdentifier) {
            break;
        }
        volumes.push_back({next, sector});
    }
    return volumes;
}

std::string TruncationNotice(const std::string& path, std::int64_t length, const SPrimaryVolumeDescriptor& volume) {
    const std::int64_t volumeSectors = volume.volumeSpaceSize.Value();
    if (!std::ranges::equal(volume.standardIdentifier, std::string_view("CD001")) ||
        length >= volumeSectors * kSectorSize) {
        return {};
    }
    return Format("%s is truncated: it has %lld sectors, its volume descriptor says %lld\n", path.c_str(),
                  static_cast<long long>(length / kSectorSize), static_cast<long long>(volumeSectors));
}

EPostgapState PostgapStateOf(std::int64_t imageSectors, std::int64_t volumeSectors) {
    if (imageSectors == volumeSectors) {
        return EPostgapState::Complete;
    }
    return imageSectors + kPostgapSectors == volumeSectors ? EPostgapState::Missing : EPostgapState::Neither;
}

TagHead ReadAnchorTag(CByteSource& image, std::uint32_t volumeSectors) {
    for (const std::int64_t sector : {std::int64_t{volumeSectors} - 1, kAnchorSector}) {
        TagHead tag = {};
        image.ReadAt(sector * kSectorSize, tag);
        if (LoadLe16(std::span(tag).first<2>()) == kTagAnchor) {
            return tag;
        }
    }
    return {};
}

std::array<std::uint8_t, sizeof(SBothOrder32)> VolumeSizeField(std::int64_t length) {
    const auto sectors = static_cast<std::uint32_t>(length / kSectorSize);
    return std::bit_cast<std::array<std::uint8_t, sizeof(SBothOrder32)>>(SBothOrder32{Le32(sectors), Be32(sectors)});
}

}  // namespace vantrel
