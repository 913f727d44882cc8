#include "iso/volume.h"

#include <algorithm>
#include <bit>

namespace vantrel {

namespace {

constexpr std::size_t kMarkSize = 3;

bool HasMark(CByteSource& image, std::int64_t position, std::string_view mark) {
    std::array<std::uint8_t, kMarkSize> bytes = {};
    image.ReadAt(position, bytes);
    return std::equal(bytes.begin(), bytes.end(), mark.begin(), mark.end());
}

}  // namespace

EImageMark ReadImageMark(CByteSource& image) {
    if (HasMark(image, kXaMarkPosition, "CD-")) {
        return EImageMark::Cd;
    }
    return HasMark(image, kDvdMarkPosition, "DVD") ? EImageMark::Dvd : EImageMark::None;
}

EMedia MediaOf(const SMediaKey& key) {
    if (key.id == 'L' && key.sub == 0) {
        return EMedia::Dvd;
    }
    if (key.sub != 'C') {
        return EMedia::Unknown;
    }
    if (key.id == 'L') {
        return EMedia::Cd;
    }
    return key.id == 'S' ? EMedia::Umd : EMedia::Unknown;
}

SMediaKey MediaKeyOf(const SPrimaryVolumeDescriptor& volume) {
    return {volume.applicationIdentifier[1], volume.applicationUse[kXaMarkInApplicationUse]};
}

SPrimaryVolumeDescriptor ReadPrimaryVolume(CByteSource& image) {
    std::array<std::uint8_t, sizeof(SPrimaryVolumeDescriptor)> bytes = {};
    image.ReadAt(kPrimaryVolumePosition, bytes);
    return std::bit_cast<SPrimaryVolumeDescriptor>(bytes);
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

}  // namespace vantrel
