// Names of the main dialog's controls, so that tests read like the window.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/control_state.h"
#include "resources/resource_ids.h"

namespace vantrel::test {

inline std::string ControlName(int controlId) {
    switch (controlId) {
        case IDC_BROWSE:
            return "browse";
        case IDC_ISO_TO_IML:
            return "iso2iml";
        case IDC_VANTREL:
            return "vantrel";
        case IDC_ISO_TO_BIN:
            return "iso2bin";
        case IDC_BIN_TO_ISO:
            return "bin2iso";
        case IDC_ISO_TO_DAX:
            return "iso2dax";
        case IDC_DAX_TO_ISO:
            return "dax2iso";
        case IDC_ISO_TO_CSO:
            return "iso2cso";
        case IDC_CSO_TO_ISO:
            return "cso2iso";
        case IDC_CHECK_POSTGAP:
            return "check postgap";
        case IDC_FULL_PATH:
            return "Full Path";
        case IDC_RELATIVE_PATH:
            return "Relative Path";
        case IDC_COMPRESSION:
            return "level list";
        default:
            return "unknown control";
    }
}

/// The names of controls or, with "+" for enabled and "-" for greyed ones, the states, separated by commas.
inline std::string ListOf(const auto& items) {
    std::string list;
    for (const auto& item : items) {
        list += list.empty() ? "" : ", ";
        if constexpr (requires { item.enabled; }) {
            list += (item.enabled ? "+" : "-") + ControlName(item.controlId);
        } else {
            list += ControlName(item);
        }
    }
    return list;
}

}  // namespace vantrel::test
