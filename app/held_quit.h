// Keeps modal windows open while the program is about to quit.
#pragma once

#include <windows.h>

namespace vantrel {

/// Takes a pending WM_QUIT out of the thread's queue and posts it again when the object is destroyed. A modal window
/// would close at once with WM_QUIT pending.
class CHeldQuit {
public:
    CHeldQuit() {
        MSG message{};
        m_wasPending = PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
    }
    ~CHeldQuit() {
        if (m_wasPending) {
            PostQuitMessage(0);
        }
    }
    CHeldQuit(const CHeldQuit&) = delete;
    CHeldQuit& operator=(const CHeldQuit&) = delete;

private:
    bool m_wasPending;
};

}  // namespace vantrel
