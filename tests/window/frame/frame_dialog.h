// The program's dialog for tests in their own process, without its functions.
#pragma once

#include "app/ui/dialog.h"
#include "app/ui/window.h"
#include "resources/resource_ids.h"

namespace vantrel::test {

class CFrameDialog {
public:
    CFrameDialog()
        : m_window(CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_MAIN), nullptr, Nothing, 0)) {
        ShowWindow(m_window, SW_SHOWNORMAL);
    }
    CFrameDialog(const CFrameDialog&) = delete;
    CFrameDialog& operator=(const CFrameDialog&) = delete;
    ~CFrameDialog() { DestroyWindow(m_window); }

    HWND Window() const { return m_window; }
    HWND Item(int id) const { return GetDlgItem(m_window, id); }

private:
    static INT_PTR CALLBACK Nothing(HWND, UINT, WPARAM, LPARAM) { return FALSE; }

    HWND m_window;
};

}  // namespace vantrel::test
