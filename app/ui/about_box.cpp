// The dialog template defines the box. This file adds the function of its two links.
#include "app/ui/about_box.h"

#include <algorithm>
#include <iterator>

#include "app/held_quit.h"
#include "app/resource_file.h"
#include "app/ui/hover_cursor.h"
#include "app/ui/link_label.h"
#include "resources/resource_ids.h"

namespace vantrel {
namespace {

/// Where the links lead: to files that are delivered beside the program.
struct SLink {
    int controlId;
    const wchar_t* fileName;
};
constexpr SLink kLinks[] = {
    {IDC_ABOUT_WEB_LINK, L"README.md"},
    {IDC_ABOUT_MAIL_LINK, L"LICENSE"},
};

/// Moves a window to the middle of its owner, but not out of the display.
void CentreOnOwner(HWND window) {
    RECT owner{};
    RECT own{};
    GetWindowRect(GetWindow(window, GW_OWNER), &owner);
    GetWindowRect(window, &own);
    MONITORINFO display{};
    display.cbSize = sizeof display;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &display);
    const RECT& area = display.rcWork;
    const LONG width = own.right - own.left;
    const LONG height = own.bottom - own.top;
    const LONG left = std::min((owner.left + owner.right - width) / 2, area.right - width);
    const LONG top = std::min((owner.top + owner.bottom - height) / 2, area.bottom - height);
    SetWindowPos(window, nullptr, std::max(left, area.left), std::max(top, area.top), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

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
        CentreOnOwner(dialog);
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

std::wstring AboutLinkTarget(int controlId) {
    const auto* const link = std::ranges::find(kLinks, controlId, &SLink::controlId);
    return link == std::end(kLinks) ? std::wstring() : ProgramFolder() + link->fileName;
}

}  // namespace vantrel
