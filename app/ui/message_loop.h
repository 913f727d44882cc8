// The message loop of the window's thread, and the pump that keeps the window alive while a conversion runs in it.
#pragma once

#include <windows.h>

namespace vantrel {

/// Who looks at every message before it is dispatched.
class IMessageFilter {
public:
    virtual ~IMessageFilter() = default;
    /// True when the message is dealt with and not to be dispatched.
    virtual bool PreTranslateMessage(MSG& message) = 0;
};

class CMessageLoop {
public:
    void SetFilter(IMessageFilter* filter) { m_filter = filter; }

    /// Waits for one message and handles it; false when it was WM_QUIT.
    bool PumpMessage();

    /// Pumps until WM_QUIT, or until `window` is destroyed.
    void Run(HWND window);

private:
    IMessageFilter* m_filter = nullptr;
};

/// Handles every pending message; 1 when the queue is empty. After WM_QUIT, which is posted again so that the loop
/// outside ends too, 0: whoever converts goes on, and the program ends afterwards.
int PumpMessages(CMessageLoop& loop);

}  // namespace vantrel
