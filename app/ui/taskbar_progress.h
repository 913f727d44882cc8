// Shows the progress of a conversion on the program's taskbar button and keeps the system from sleeping. Does nothing
// if the system does not support it.
#pragma once

#include <windows.h>

#include <cstdint>

#include "app/ui/paint_clock.h"

struct ITaskbarList3;

namespace vantrel {

/// Exists during a conversion.
class CTaskbarProgress {
public:
    explicit CTaskbarProgress(HWND window);
    CTaskbarProgress(const CTaskbarProgress&) = delete;
    CTaskbarProgress& operator=(const CTaskbarProgress&) = delete;
    ~CTaskbarProgress();

    /// Shows the progress if the last update was long enough ago.
    void ShowIfDue(std::int32_t position, std::int32_t range);

private:
    HWND m_window;
    ITaskbarList3* m_taskbar = nullptr;
    CPaintClock m_clock;
};

/// Keeps the system awake during the object's life. The display may be turned off.
class CSleepGuard {
public:
    CSleepGuard() { SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED); }
    CSleepGuard(const CSleepGuard&) = delete;
    CSleepGuard& operator=(const CSleepGuard&) = delete;
    ~CSleepGuard() { SetThreadExecutionState(ES_CONTINUOUS); }
};

}  // namespace vantrel
