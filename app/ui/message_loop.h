// The message loop of the window's thread, and the message pump that keeps the window responsive during a conversion.
#pragma once

#include <windows.h>

namespace vantrel {

/// Receives every message before it is dispatched.
class IMessageFilter {
public:
    virtual ~IMessageFilter() = default;
    /// Returns true if the message has been handled and must not be dispatched.
    virtual bool PreTranslateMessage(MSG& message) = 0;
};

class CMessageLoop {
public:
    void SetFilter(IMessageFilter* filter) { m_filter = filter; }

    /// Waits for one message and processes it. Returns false if it was WM_QUIT.
    bool PumpMessage();

    /// Processes messages until WM_QUIT, or until `window` is destroyed.
    void Run(HWND window);

private:
    IMessageFilter* m_filter = nullptr;
};

/// Processes all pending messages and returns 1. If WM_QUIT was among them, posts it again for the outer message loop
/// and returns 0: a running conversion continues and the program ends afterwards. WM_QUIT is posted last, because the
/// queue delivers it before the user's input, so a click on Exit would never arrive.
int PumpMessages(CMessageLoop& loop);

}  // namespace vantrel
