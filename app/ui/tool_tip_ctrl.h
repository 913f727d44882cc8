// The tooltips of a dialog's controls.
#pragma once

#include "app/ui/window.h"

namespace vantrel {

class CToolTipCtrl : public CWindow {
public:
    CToolTipCtrl() = default;
    ~CToolTipCtrl();
    CToolTipCtrl(const CToolTipCtrl&) = delete;
    CToolTipCtrl& operator=(const CToolTipCtrl&) = delete;

    bool Create(HWND dialog);
    void AddTool(HWND control, const wchar_t* text) const;
    void RemoveTool(HWND control) const;
    /// Passes a message of the dialog to the tooltips, which appear and disappear by such messages.
    void RelayEvent(const MSG& message) const;

private:
    void SendTool(UINT message, HWND control, const wchar_t* text) const;

    HWND m_dialog = nullptr;
};

}  // namespace vantrel
