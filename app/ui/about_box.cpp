// The dialog template defines the box. This file adds the function of its two links.
#include "app/ui/about_box.h"

#include "app/held_quit.h"
#include "app/ui/hover_cursor.h"
#include "app/ui/link_label.h"
#include "resources/resource_ids.h"

namespace vantrel {
namespace {

class CAboutBox {
public:
    void Run(HWND owner) {
        const CHeldQuit held;
        DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_ABOUT), owner, &CAboutBox::Receive,
                        reinterpret_cast<LPARAM>(this));
    }

private:
    static INT_PTR CALLBACK Receive(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            reinterpret_cast<CAboutBox*>(lParam)->OnInitDialog(dialog);
            return TRUE;
        }
        if (message == WM_COMMAND && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)) {
            EndDialog(dialog, LOWORD(wParam));
            return TRUE;
        }
        return FALSE;
    }

    void OnInitDialog(HWND dialog) {
        MakeLink(m_webLink, dialog, IDC_ABOUT_WEB_LINK);
        MakeLink(m_mailLink, dialog, IDC_ABOUT_MAIL_LINK);
    }

    void MakeLink(CLinkLabel& link, HWND dialog, int id) {
        const HWND label = GetDlgItem(dialog, id);
        if (label == nullptr) {
            return;
        }
        link.Attach(label);
        link.SetTarget(AboutLinkTarget(id));
        link.SetHoverCursor(&m_cursor);
    }

    CHoverCursor m_cursor;
    CLinkLabel m_webLink;
    CLinkLabel m_mailLink;
};

}  // namespace

void RunAboutBox(HWND owner) {
    CAboutBox().Run(owner);
}

const wchar_t* AboutLinkTarget(int controlId) {
    switch (controlId) {
        case IDC_ABOUT_WEB_LINK:
            return L"https://example.org/quorn-vantrel";
        case IDC_ABOUT_MAIL_LINK:
            return L"mailto:quorn-vantrel@example.org";
        default:
            return nullptr;
    }
}

}  // namespace vantrel
