#include "app/ui/tool_tip_ctrl.h"

#include <commctrl.h>

namespace vantrel {

CToolTipCtrl::~CToolTipCtrl() {
    if (Exists()) {
        DestroyWindow(m_window);
    }
}

/// The window has no owner. Tooltips are topmost windows, and under Wine the owner of one cannot become topmost itself.
bool CToolTipCtrl::Create(HWND dialog) {
    m_dialog = dialog;
    Attach(CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                           CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr,
                           GetModuleHandleW(nullptr), nullptr));
    return Exists();
}

void CToolTipCtrl::AddTool(HWND control, const wchar_t* text) const {
    SendTool(TTM_ADDTOOLW, control, text);
}

void CToolTipCtrl::RemoveTool(HWND control) const {
    SendTool(TTM_DELTOOLW, control, nullptr);
}

void CToolTipCtrl::SendTool(UINT message, HWND control, const wchar_t* text) const {
    TTTOOLINFOW tool{};
    tool.cbSize = TTTOOLINFOW_V2_SIZE;
    tool.uFlags = TTF_IDISHWND;
    tool.hwnd = m_dialog;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    tool.lpszText = const_cast<wchar_t*>(text);  // the control copies it
    Send(message, 0, reinterpret_cast<LPARAM>(&tool));
}

void CToolTipCtrl::RelayEvent(const MSG& message) const {
    if (m_window != nullptr) {
        MSG relayed = message;
        Send(TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&relayed));
    }
}

}  // namespace vantrel
