// The tooltips of the dialog's controls.
#pragma once

#include "app/ui/window.h"

namespace vantrel {

class CToolTipCtrl : public CWindow {
public:
    CToolTipCtrl() = default;
    ~CToolTipCtrl();
    CToolTipCtrl(const CToolTipCtrl&) = delete;
    CToolTipCtrl& operator=(const CToolTipCtrl&) = delete;

    /// Makes the tooltips of a dialog's controls.
    bool Create(HWND dialog);
    /// Gives a control a tooltip.
    void AddTool(HWND control, const wchar_t* text) const;
    /// Shows the tooltips that a message calls for.
    void RelayEvent(const MSG& message) const;

private:
    HWND m_dialog = nullptr;
};

}  // namespace vantrel
