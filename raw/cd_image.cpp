#include "raw/cd_image.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

bool StartsWith(std::span<const std::uint8_t> field, std::string_view mark) {
    return std::equal(mark.begin(), mark.end(), field.begin());
}

bool IsPlayStation2Cd(const SPrimaryVolumeDescriptor& volume) {
    return StartsWith(std::span(volume.applicationUse).subspan(kXaMarkInApplicationUse), "CD-") &&
           StartsWith(volume.applicationIdentifier, "PLA");
}

}  // namespace

std::uint32_t SCdImage::Sectors() const {
    return static_cast<std::uint32_t>(length) / static_cast<std::uint32_t>(kSectorSize);
}

SCdImage ExamineCdImage(const std::string& path, CCheckedInput& image, COperation& operation, CByteSource* source) {
    image.AttachOrOpen(source, path, "Code 103- Error Opening %s");
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(image);
    if (!IsPlayStation2Cd(volume)) {
        operation.Fail(Format("Code 76 PS2 - invalid PS2 CD iso  file header  %s", path.c_str()));
    }
    const std::int64_t length = image.SizeOrFail();
    image.FailIfUnread();
    return {length, volume};
}

}  // namespace vantrel
