#include "compress/psp_image.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/checked_file.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// The volume space size counts only in an image that is marked as ISO 9660 (ECMA-119 8.4.2).
void NotifyIfTruncated(const SCompressionRequest& request, CCheckedInput& image, COperation& operation) {
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(image);
    const std::int64_t volumeSectors = volume.volumeSpaceSize.Value();
    const std::int64_t size = image.SizeOrFail();
    image.FailIfUnread();
    if (std::ranges::equal(volume.standardIdentifier, std::string_view("CD001")) &&
        size < volumeSectors * kSectorSize) {
        operation.Notify(Format("%s is truncated: it has %lld sectors, its volume descriptor says %lld\n",
                                request.imagePath.c_str(), static_cast<long long>(size / kSectorSize),
                                static_cast<long long>(volumeSectors)));
    }
}

}  // namespace

void CheckPspImage(const SCompressionRequest& request, const char* openPattern, COperation& operation) {
    constexpr std::string_view kMark = "PSP";
    CCheckedInput image(operation);
    image.AttachOrOpen(request.image, request.chosenPath, openPattern);
    std::array<std::uint8_t, kMark.size()> identifier = {};
    if (image.ReadAt(kApplicationIdentifierPosition, identifier) != identifier.size() && request.image != nullptr) {
        image.FailIfUnread();
    }
    if (!std::ranges::equal(identifier, kMark)) {
        operation.Fail(Format("Code 50 PSP - invalid PSP iso  file header  %s", request.shownName.c_str()));
    }
    if (request.strict) {
        NotifyIfTruncated(request, image, operation);
    }
}

}  // namespace vantrel
