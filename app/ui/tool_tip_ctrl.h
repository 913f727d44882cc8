// The tooltips of the dialog's controls.
#pragma once

#include "app/ui/window.h"

namespace vantrel {

class CToolTipCtrl : public CWindow {
public:
    bool Create(HWND owner);
    /// Gives a control a tooltip.
    void AddTool(HWND control, const wchar_t* text) const;
    /// Shows the tooltips that a message calls for.
    void RelayEvent(const MSG& message) const;

private:
    HWND m_owner = nullptr;
};

}  // namespace vantrel
