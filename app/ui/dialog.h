// A dialog window whose messages, WM_CREATE among them, reach a virtual function, and which runs over the program's own
// message loop, so that every message can be looked at before it is dispatched.
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

    /// Creates the window, shows it and pumps messages until the window is gone or the program quits.
    void DoModal(CMessageLoop& loop);

    /// Dialog keys (Tab, Enter, Esc, arrows).
    bool PreTranslateMessage(MSG& message) override;

    CWindow Item(int id) const { return CWindow(GetDlgItem(m_window, id)); }

protected:
    /// Every message of the window. What is not handled goes to Default.
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    /// The system's handling of a dialog message.
    LRESULT Default(UINT message, WPARAM wParam, LPARAM lParam);

private:
    friend class CDialogCreation;
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    int m_templateId;
    WNDPROC m_systemProcedure = nullptr;
};

}  // namespace vantrel
