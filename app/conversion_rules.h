// What the window does with its controls in each conversion. Portable, so that the rules are tested without a window.
#pragma once

#include <cstdint>
#include <span>

#include "app/control_state.h"
#include "operation/operation.h"

namespace vantrel {

/// When a conversion greys the list of compression levels.
enum class ELevelList {
    Unused,         ///< Never.
    GreyedAtBegin,  ///< Right after the buttons, if a level is selected.
    GreyedWithBar,  ///< When the progress bar is created.
};

/// What is left to do after the engine's function has returned.
struct SEnding {
    std::span<const SControlState> states;  ///< Set in this order.
    bool acceptsDrops = false;              ///< Accept dropped files again.
};

struct SConversionRules {
    EConversion conversion;
    std::span<const int> greyed;  ///< Buttons to grey when the conversion begins, in this order.
    ELevelList levelList;
    int fillBitmap;  ///< Resource id of the bitmap that fills the progress bar.
    SEnding ending;
};

const SConversionRules& RulesOf(EConversion conversion);

/// The states of a completed conversion: the user can only choose another input.
std::span<const SControlState> CompletionStates();

/// The ending of a conversion that the user has cancelled.
const SEnding& CancelEnding();

}  // namespace vantrel
