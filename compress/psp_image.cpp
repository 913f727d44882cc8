#include "compress/psp_image.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/input_file.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::int64_t kApplicationIdentifier = 16 * 2048 + 574;
constexpr std::string_view kPspMark = "PSP";

bool CarriesPspMark(CInputFile& image) {
    std::array<std::uint8_t, kPspMark.size()> mark = {};
    return image.ReadAt(kApplicationIdentifier, mark) == mark.size() &&
           std::equal(mark.begin(), mark.end(), kPspMark.begin());
}

}  // namespace

void CheckPspImage(const SCompressionRequest& request, const char* openCode, COperation& operation) {
    CInputFile image;
    if (!image.Open(request.chosenPath)) {
        operation.Fail(Format("%s - Error Opening %s", openCode, request.chosenPath.c_str()));
    }
    if (!CarriesPspMark(image)) {
        operation.Fail(Format("Code 50 PSP - invalid PSP iso  file header  %s", request.shownName.c_str()));
    }
}

}  // namespace vantrel
