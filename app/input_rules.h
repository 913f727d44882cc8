// Which commands an input file offers, told by its extension; and how the working folder becomes the folder of the
// sounds. Portable, so that the rules are tested without a window.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "operation/operation.h"

namespace vantrel {

/// One command and whether the chosen input enables it.
struct SCommandState {
    ECommand command;
    bool enabled;
};

/// The nine commands that depend on the kind of input.
inline constexpr std::size_t kInputCommandCount = 9;
using CommandStates = std::array<SCommandState, kInputCommandCount>;

/// The states for an input with this extension (with its dot), the enabled commands first, in the order in which they
/// are set. Letter case matters: names reach the rules folded to lower case. Nothing for an extension that no command
/// reads.
std::optional<CommandStates> CommandsFor(std::string_view extension);

/// The nine commands, all greyed: the state while no usable input is chosen.
CommandStates NoCommands();

/// `folder` written out as if it were a printf pattern without arguments: "%%" becomes "%", a conversion such as "%5d"
/// becomes nothing, and a '%' that begins no conversion vanishes alone.
std::string ExpandAsPattern(std::string_view folder);

}  // namespace vantrel
