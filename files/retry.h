// Actions that another process prevents for a moment: a virus scanner that opens new files, a command that looks for
// leftovers, a file system in user space that hides removed files while they are open.
#pragma once

#include <chrono>
#include <thread>

namespace vantrel {

/// Repeats an action until it returns true, for at most 100 ms. Returns whether it did; the last error is that of the
/// last try.
template <typename Action>
bool TryBriefly(Action action) {
    constexpr std::chrono::milliseconds kDelay{20};
    constexpr int kRetries = 5;
    for (int retry = 0; !action(); ++retry) {
        if (retry == kRetries) {
            return false;
        }
        std::this_thread::sleep_for(kDelay);
    }
    return true;
}

}  // namespace vantrel
