// Which buttons an input file enables, by its extension. Portable, so that the rules are tested without a window.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "app/control_state.h"

namespace vantrel {

/// The nine buttons whose state depends on the input, in the order in which they are set.
using ButtonStates = std::array<SControlState, 9>;

/// The states for an input with this extension (including its dot), enabled buttons first. Nothing if no command
/// accepts the extension. Letter case matters, because file names arrive in lower case.
std::optional<ButtonStates> ButtonsFor(std::string_view extension);

/// The same buttons, all greyed: the states without an accepted input.
ButtonStates ButtonsWithoutInput();

}  // namespace vantrel
