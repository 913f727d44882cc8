#include "app/ui/status_bar.h"

#include <commctrl.h>

#include <algorithm>

#include "app/ui/buffered_paint.h"
#include "app/ui/scaling.h"
#include "app/ui/theme_library.h"

namespace vantrel {
namespace {

/// The usual id of a status bar (AFX_IDW_STATUS_BAR).
constexpr UINT_PTR kStatusBarId = 0xE801;
constexpr UINT_PTR kSubclassId = 1;
/// Between a pane's left edge and its text.
constexpr int kTextMargin = 2;
constexpr int kSeparatorMargin = 4;
constexpr UINT kPaneText = DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX;

}  // namespace

bool CStatusBar::Create(HWND parent) {
    constexpr DWORD style = WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | CCS_BOTTOM;
    Attach(CreateWindowExW(0, STATUSCLASSNAMEW, L"", style, 0, 0, 0, 0, parent, reinterpret_cast<HMENU>(kStatusBarId),
                           GetModuleHandleW(nullptr), nullptr));
    if (!Exists()) {
        return false;
    }
    Send(WM_SETFONT, static_cast<WPARAM>(SendMessageW(parent, WM_GETFONT, 0, 0)), TRUE);
    return SetWindowSubclass(m_window, BarProcedure, kSubclassId, reinterpret_cast<DWORD_PTR>(this)) != FALSE;
}

void CStatusBar::SetIndicators(std::initializer_list<UINT> stringIds) {
    int pane = 0;
    for (const UINT id : stringIds) {
        SetPaneText(pane++, StringResource(id));
    }
}

void CStatusBar::SetPaneWidths(std::initializer_list<int> widths) {
    std::copy_n(widths.begin(), std::min(widths.size(), m_widths.size()), m_widths.begin());
    Reposition();
}

void CStatusBar::Reposition() {
    std::array<int, kPaneCount> edges{};
    int edge = 0;
    for (std::size_t i = 0; i < m_widths.size(); ++i) {
        edge += m_widths[i];
        edges[i] = Scaled(m_window, edge);
    }
    edges.back() = -1;
    Send(SB_SETPARTS, edges.size(), reinterpret_cast<LPARAM>(edges.data()));
    Send(WM_SIZE);
}

void CStatusBar::SetBackground(COLORREF colour) {
    m_background = colour;
    Send(SB_SETBKCOLOR, 0, static_cast<LPARAM>(colour));
}

void CStatusBar::SetPaneText(int pane, const std::wstring& text) {
    const auto index = static_cast<std::size_t>(pane);
    if (m_texts[index] == text) {
        return;
    }
    m_texts[index] = text;
    m_unstored[index] = true;
    m_unpainted = true;
    PaintIfDue();
}

void CStatusBar::PaintIfDue() {
    if (m_unpainted && m_clock.IsDue()) {
        PaintNow();
    }
}

void CStatusBar::PaintNow() {
    if (m_unpainted) {
        m_unpainted = false;
        StoreTexts();
        InvalidateRect(m_window, nullptr, FALSE);
        UpdateWindow(m_window);
        m_clock.Painted();
    }
}

/// Passes changed texts to the control, where other programs read them.
void CStatusBar::StoreTexts() {
    m_storing = true;
    for (std::size_t i = 0; i < m_texts.size(); ++i) {
        if (m_unstored[i]) {
            m_unstored[i] = false;
            Send(SB_SETTEXTW, i, reinterpret_cast<LPARAM>(m_texts[i].c_str()));
        }
    }
    m_storing = false;
}

LRESULT CALLBACK CStatusBar::BarProcedure(HWND bar, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR self) {
    auto& statusBar = *reinterpret_cast<CStatusBar*>(self);
    switch (message) {
        case SB_GETTEXTA:
        case SB_GETTEXTW:
        case SB_GETTEXTLENGTHA:
        case SB_GETTEXTLENGTHW:
        case WM_GETTEXT:
        case WM_GETTEXTLENGTH:
        case WM_GETOBJECT:
            statusBar.StoreTexts();
            break;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_PRINTCLIENT:
            statusBar.Paint(reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_PAINT: {
            if (statusBar.m_storing) {  // each text causes a WM_PAINT; one painting is enough
                ValidateRect(bar, nullptr);
                return 0;
            }
            PAINTSTRUCT paint{};
            statusBar.Paint(BeginPaint(bar, &paint));
            EndPaint(bar, &paint);
            return 0;
        }
        default:
            break;
    }
    return DefSubclassProc(bar, message, wParam, lParam);
}

void CStatusBar::Paint(HDC target) {
    RECT client{};
    GetClientRect(m_window, &client);
    const CBufferedPaint buffer(target, client);
    const HDC context = buffer.Context();
    const bool plain = IsHighContrast() || m_background == CLR_INVALID;
    SetBkColor(context, plain ? GetSysColor(COLOR_BTNFACE) : m_background);
    ExtTextOutW(context, 0, 0, ETO_OPAQUE, &client, nullptr, 0, nullptr);
    SetTextColor(context, plain ? GetSysColor(COLOR_BTNTEXT) : RGB(0, 0, 0));
    SetBkMode(context, TRANSPARENT);
    const HGDIOBJ oldFont = SelectObject(context, reinterpret_cast<HGDIOBJ>(Send(WM_GETFONT)));
    RECT line = client;
    line.bottom = line.top + 1;
    FillRect(context, &line, GetSysColorBrush(COLOR_BTNSHADOW));
    for (int pane = 0; pane < kPaneCount; ++pane) {
        PaintPane(context, pane);
    }
    SelectObject(context, oldFont);
}

/// The change of the space between characters, 0 or less, with which a text fits `width`. At most one pixel of a
/// display at 100 %; a longer text gets an ellipsis.
int CStatusBar::SqueezeFor(HDC context, const std::wstring& text, int width) const {
    RECT extent{};
    DrawTextW(context, text.c_str(), -1, &extent, kPaneText | DT_CALCRECT);
    const int characters = std::max(1, static_cast<int>(text.size()));
    const int excess = std::max<int>(extent.right - width, 0);
    return std::max(-Scaled(m_window, 1), -((excess + characters - 1) / characters));
}

void CStatusBar::PaintPane(HDC context, int pane) {
    RECT rect{};
    Send(SB_GETRECT, static_cast<WPARAM>(pane), reinterpret_cast<LPARAM>(&rect));
    if (pane + 1 < kPaneCount) {
        const int margin = Scaled(m_window, kSeparatorMargin);
        RECT line = {rect.right - 1, rect.top + margin, rect.right, rect.bottom - margin};
        FillRect(context, &line, GetSysColorBrush(COLOR_3DDKSHADOW));
    }
    rect.left += Scaled(m_window, kTextMargin);
    const std::wstring& text = m_texts[static_cast<std::size_t>(pane)];
    if (pane == 0) {
        DrawTextW(context, text.c_str(), -1, &rect, kPaneText | DT_PATH_ELLIPSIS);
        return;
    }
    SetTextCharacterExtra(context, SqueezeFor(context, text, rect.right - rect.left));
    DrawTextW(context, text.c_str(), -1, &rect, kPaneText | DT_END_ELLIPSIS);
    SetTextCharacterExtra(context, 0);
}

}  // namespace vantrel
