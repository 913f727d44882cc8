#include "app/ui/message_loop.h"

namespace vantrel {

bool CMessageLoop::PumpMessage() {
    MSG message{};
    const BOOL result = GetMessageW(&message, nullptr, 0, 0);
    if (result == 0) {
        return false;
    }
    if (result > 0 && (m_filter == nullptr || !m_filter->PreTranslateMessage(message))) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

void CMessageLoop::Run(HWND window) {
    while (IsWindow(window) != FALSE && PumpMessage()) {
    }
}

int PumpMessages(CMessageLoop& loop) {
    MSG message{};
    bool isQuitting = false;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE) != FALSE) {
        isQuitting = !loop.PumpMessage() || isQuitting;
    }
    if (isQuitting) {
        PostQuitMessage(0);
    }
    return isQuitting ? 0 : 1;
}

}  // namespace vantrel
