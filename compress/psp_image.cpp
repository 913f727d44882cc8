#include "compress/psp_image.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/checked_file.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

void NotifyIfTruncated(const SCompressionRequest& request, CCheckedInput& image, COperation& operation) {
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(image);
    const std::string notice = TruncationNotice(request.imagePath, image.SizeOrFail(), volume);
    image.FailIfUnread();
    if (!notice.empty()) {
        operation.Notify(notice);
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
