#include "iso/udf/osta_name.h"

#include "files/utf.h"

namespace vantrel {

std::optional<std::string> NameOfOsta(std::span<const std::uint8_t> recorded) {
    if (recorded.size() < 2 || (recorded[0] != 8 && recorded[0] != 16)) {
        return std::nullopt;
    }
    const std::size_t unitSize = recorded[0] / 8U;
    const auto text = recorded.subspan(1);
    if (text.size() % unitSize != 0) {
        return std::nullopt;
    }
    std::wstring units;
    for (std::size_t i = 0; i < text.size(); i += unitSize) {
        units.push_back(static_cast<wchar_t>(unitSize == 1 ? text[i] : text[i] << 8U | text[i + 1]));
    }
    return Utf8Of(units);
}

}  // namespace vantrel
