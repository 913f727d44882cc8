#include "app/ui/dialog.h"

namespace vantrel {
namespace {

constexpr wchar_t kDialogProperty[] = L"VantrelDialog";

INT_PTR CALLBACK NothingHandled(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

}  // namespace

/// Attaches a dialog object to its window during creation, before the first message. The dialog manager offers no other
/// access to WM_CREATE.
class CDialogCreation {
public:
    explicit CDialogCreation(CDialog& dialog) { t_dialog = &dialog; }
    CDialogCreation(const CDialogCreation&) = delete;
    CDialogCreation& operator=(const CDialogCreation&) = delete;
    ~CDialogCreation() {
        UnhookWindowsHookEx(m_hook);
        t_dialog = nullptr;
    }

private:
    /// Together with a first window, the system also creates others, such as that of the input method.
    static bool IsDialogClass(HWND window) {
        constexpr int kRoom = 16;
        wchar_t name[kRoom] = {};
        GetClassNameW(window, name, kRoom);
        return lstrcmpW(name, L"#32770") == 0;
    }

    static LRESULT CALLBACK CatchWindow(int code, WPARAM wParam, LPARAM lParam) {
        if (code == HCBT_CREATEWND && t_dialog != nullptr && IsDialogClass(reinterpret_cast<HWND>(wParam))) {
            CDialog* const dialog = t_dialog;
            t_dialog = nullptr;
            dialog->Attach(reinterpret_cast<HWND>(wParam));
            SetPropW(dialog->Handle(), kDialogProperty, dialog);
            dialog->m_systemProcedure = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
                dialog->Handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(CDialog::WindowProcedure)));
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    /// The dialog for the hook procedure, which has no user parameter. Set only during a creation on this thread.
    static thread_local CDialog* t_dialog;
    HHOOK m_hook = SetWindowsHookExW(WH_CBT, CatchWindow, nullptr, GetCurrentThreadId());
};

thread_local CDialog* CDialogCreation::t_dialog = nullptr;

CDialog::~CDialog() {
    if (Exists()) {
        DestroyWindow(m_window);
    }
}

void CDialog::DoModal(CMessageLoop& loop) {
    {
        const CDialogCreation creation(*this);
        CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(m_templateId), nullptr, NothingHandled, 0);
    }
    if (!Exists()) {
        return;
    }
    loop.SetFilter(this);
    ShowWindow(m_window, SW_SHOWNORMAL);
    UpdateWindow(m_window);
    loop.Run(m_window);
    loop.SetFilter(nullptr);
}

bool CDialog::PreTranslateMessage(MSG& message) {
    return IsDialogMessageW(m_window, &message) != FALSE;
}

LRESULT CDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return Default(message, wParam, lParam);
}

LRESULT CDialog::Default(UINT message, WPARAM wParam, LPARAM lParam) {
    return CallWindowProcW(m_systemProcedure, m_window, message, wParam, lParam);
}

LRESULT CALLBACK CDialog::WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const dialog = static_cast<CDialog*>(GetPropW(window, kDialogProperty));
    if (dialog == nullptr) {
        return DefDlgProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        RemovePropW(window, kDialogProperty);
        const LRESULT result = dialog->Default(message, wParam, lParam);
        dialog->Attach(nullptr);
        return result;
    }
    return dialog->OnMessage(message, wParam, lParam);
}

}  // namespace vantrel
