#include "compress/psp_image.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/checked_file.h"
#include "iso/iso9660.h"
#include "operation/text.h"

namespace vantrel {

void CheckPspImage(const SCompressionRequest& request, const char* openPattern, COperation& operation) {
    constexpr std::string_view kMark = "PSP";
    CCheckedInput image(operation);
    image.OpenOrFail(request.chosenPath, openPattern);
    std::array<std::uint8_t, kMark.size()> identifier = {};
    image.ReadAt(kApplicationIdentifierPosition, identifier);
    if (!std::ranges::equal(identifier, kMark)) {
        operation.Fail(Format("Code 50 PSP - invalid PSP iso  file header  %s", request.shownName.c_str()));
    }
}

}  // namespace vantrel
