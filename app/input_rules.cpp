#include "app/input_rules.h"

#include <algorithm>

#include "resources/resource_ids.h"

namespace vantrel {
namespace {

struct SInputRule {
    std::string_view extension;
    std::size_t enabledCount;  ///< The first so many buttons are enabled, all others greyed.
    std::array<int, std::tuple_size_v<ButtonStates>> buttons;
};

constexpr SInputRule kRules[] = {
    {".iso",
     5,
     {IDC_ISO_TO_IML, IDC_ISO_TO_BIN, IDC_ISO_TO_DAX, IDC_CHECK_POSTGAP, IDC_ISO_TO_CSO, IDC_VANTREL, IDC_BIN_TO_ISO,
      IDC_DAX_TO_ISO, IDC_CSO_TO_ISO}},
    {".iml",
     1,
     {IDC_VANTREL, IDC_ISO_TO_IML, IDC_ISO_TO_BIN, IDC_BIN_TO_ISO, IDC_CHECK_POSTGAP, IDC_ISO_TO_DAX, IDC_DAX_TO_ISO,
      IDC_ISO_TO_CSO, IDC_CSO_TO_ISO}},
    {".bin",
     1,
     {IDC_BIN_TO_ISO, IDC_ISO_TO_IML, IDC_VANTREL, IDC_ISO_TO_BIN, IDC_ISO_TO_DAX, IDC_DAX_TO_ISO, IDC_CHECK_POSTGAP,
      IDC_ISO_TO_CSO, IDC_CSO_TO_ISO}},
    {".dax",
     1,
     {IDC_DAX_TO_ISO, IDC_BIN_TO_ISO, IDC_ISO_TO_IML, IDC_VANTREL, IDC_ISO_TO_BIN, IDC_ISO_TO_DAX, IDC_CHECK_POSTGAP,
      IDC_ISO_TO_CSO, IDC_CSO_TO_ISO}},
    {".cso",
     1,
     {IDC_CSO_TO_ISO, IDC_BIN_TO_ISO, IDC_ISO_TO_IML, IDC_VANTREL, IDC_ISO_TO_BIN, IDC_ISO_TO_DAX, IDC_DAX_TO_ISO,
      IDC_CHECK_POSTGAP, IDC_ISO_TO_CSO}},
};

constexpr SInputRule kWithoutInput = {"",
                                      0,
                                      {IDC_CHECK_POSTGAP, IDC_ISO_TO_IML, IDC_VANTREL, IDC_ISO_TO_BIN, IDC_BIN_TO_ISO,
                                       IDC_ISO_TO_DAX, IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO}};

ButtonStates StatesOf(const SInputRule& rule) {
    ButtonStates states{};
    for (std::size_t i = 0; i < states.size(); ++i) {
        states[i] = {rule.buttons[i], i < rule.enabledCount};
    }
    return states;
}

}  // namespace

std::optional<ButtonStates> ButtonsFor(std::string_view extension) {
    const auto* const rule = std::ranges::find(kRules, extension, &SInputRule::extension);
    return rule == std::end(kRules) ? std::nullopt : std::optional(StatesOf(*rule));
}

ButtonStates ButtonsWithoutInput() {
    return StatesOf(kWithoutInput);
}

}  // namespace vantrel
