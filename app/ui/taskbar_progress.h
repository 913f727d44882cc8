// The progress of a conversion on the program's task bar button, and the word to the system not to fall asleep
// meanwhile. Where the system knows neither, nothing happens.
#pragma once

#include <windows.h>

#include <cstdint>

#include "app/ui/paint_clock.h"

struct ITaskbarList3;

namespace vantrel {

/// Lives as long as a conversion.
class CTaskbarProgress {
public:
    explicit CTaskbarProgress(HWND window);
    CTaskbarProgress(const CTaskbarProgress&) = delete;
    CTaskbarProgress& operator=(const CTaskbarProgress&) = delete;
    ~CTaskbarProgress();

    /// Shows the part done when the last showing is long enough ago.
    void ShowIfDue(std::int32_t position, std::int32_t range);

private:
    HWND m_window;
    ITaskbarList3* m_taskbar = nullptr;
    CPaintClock m_clock;
};

/// Keeps the system awake during its life; the display may go dark.
class CSleepGuard {
public:
    CSleepGuard() { SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED); }
    CSleepGuard(const CSleepGuard&) = delete;
    CSleepGuard& operator=(const CSleepGuard&) = delete;
    ~CSleepGuard() { SetThreadExecutionState(ES_CONTINUOUS); }
};

}  // namespace vantrel
