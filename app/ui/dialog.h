// A dialog window that passes all its messages, including WM_CREATE, to a virtual function. It runs in the program's
// own message loop, where every message can be filtered before it is dispatched.
#pragma once

#include "app/ui/message_loop.h"
#include "app/ui/window.h"

namespace vantrel {

class CDialog : public CWindow, public IMessageFilter {
public:
    explicit CDialog(int templateId) : m_templateId(templateId) {}
    CDialog(const CDialog&) = delete;
    CDialog& operator=(const CDialog&) = delete;
    ~CDialog() override;

    /// Creates the window, shows it and processes messages until the window is destroyed or the program quits.
    void DoModal(CMessageLoop& loop);

    /// Handles the dialog keys (Tab, Enter, Esc, arrows).
    bool PreTranslateMessage(MSG& message) override;

    CWindow Item(int id) const { return CWindow(GetDlgItem(m_window, id)); }

protected:
    /// Receives every message of the window. Unhandled messages go to Default.
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    /// The default processing of a dialog message.
    LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam);

private:
    friend class CDialogCreation;
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    int m_templateId;
    WNDPROC m_systemProcedure = nullptr;
};

}  // namespace vantrel
