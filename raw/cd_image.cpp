#include "raw/cd_image.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/byte_order.h"
#include "operation/text.h"
#include "raw/raw_sector.h"

namespace vantrel {

namespace {

constexpr std::int64_t kVolumeDescriptor = 16 * static_cast<std::int64_t>(kUserDataSize);
constexpr std::int64_t kVolumeSpaceSize = kVolumeDescriptor + 80;
constexpr std::int64_t kApplicationIdentifier = kVolumeDescriptor + 574;
constexpr std::int64_t kXaMark = kVolumeDescriptor + 1024;
constexpr std::size_t kMarkSize = 3;

bool HoldsMark(CInputFile& image, std::int64_t position, std::string_view mark) {
    std::array<std::uint8_t, kMarkSize> found = {};
    return image.ReadAt(position, found) == found.size() && std::equal(found.begin(), found.end(), mark.begin());
}

}  // namespace

std::uint32_t SCdImage::Sectors() const {
    return static_cast<std::uint32_t>(length) / kUserDataSize;
}

SCdImage ExamineCdImage(const std::string& path, CInputFile& image, COperation& operation) {
    if (!image.Open(path)) {
        operation.Fail(Format("Code 103- Error Opening %s", path.c_str()));
    }
    if (!HoldsMark(image, kXaMark, "CD-") || !HoldsMark(image, kApplicationIdentifier, "PLA")) {
        operation.Fail(Format("Code 76 PS2 - invalid PS2 CD iso  file header  %s", path.c_str()));
    }
    std::array<std::uint8_t, 4> volumeSpace = {};
    image.ReadAt(kVolumeSpaceSize, volumeSpace);
    const std::int64_t length = image.Size();
    if (image.HasFailed()) {
        operation.Fail("Cannot read " + path);
    }
    return {length, LoadLe32(volumeSpace)};
}

}  // namespace vantrel
