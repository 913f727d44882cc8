// States of the dialog's controls as the rules of the window list them.
#pragma once

namespace vantrel {

/// A control of the main dialog, by its id, and whether it is enabled.
struct SControlState {
    int controlId;
    bool enabled;
};

}  // namespace vantrel
