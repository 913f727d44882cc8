#include "app/ui/link_label.h"

#include <commctrl.h>
#include <windowsx.h>

#include <array>
#include <cstdlib>

#include "app/ui/hyperlink.h"
#include "app/ui/scaling.h"

namespace vantrel {
namespace {

constexpr UINT_PTR kSubclassId = 2;
constexpr int kLongestText = 256;
constexpr int kMargin = 2;  // between text and focus rectangle, in pixels of a display at 100 %

constexpr COLORREF kLinkOnLight = RGB(0, 80, 180);
constexpr COLORREF kLinkOnDark = RGB(130, 200, 255);
constexpr int kLeastContrast = 90;  // of 255

int Brightness(COLORREF colour) {
    return (GetRValue(colour) * 77 + GetGValue(colour) * 150 + GetBValue(colour) * 29) >> 8;
}

/// The system's colour for links, or one of ours if it is hard to read on the background of dialogs.
COLORREF LinkColour() {
    const COLORREF colour = GetSysColor(COLOR_HOTLIGHT);
    const int ground = Brightness(GetSysColor(COLOR_BTNFACE));
    if (std::abs(Brightness(colour) - ground) >= kLeastContrast) {
        return colour;
    }
    return ground >= 128 ? kLinkOnLight : kLinkOnDark;
}

bool IsOpeningKey(WPARAM key) {
    return key == VK_RETURN || key == VK_SPACE;
}

bool IsOpeningKeyMessage(const MSG* message) {
    return message != nullptr && message->message == WM_KEYDOWN && IsOpeningKey(message->wParam);
}

}  // namespace

CLinkLabel::~CLinkLabel() {
    Detach();
}

void CLinkLabel::Attach(HWND label) {
    Detach();
    m_window = label;
    const LONG_PTR style = GetWindowLongPtrW(label, GWL_STYLE);
    SetWindowLongPtrW(label, GWL_STYLE, style | WS_TABSTOP | SS_NOTIFY);
    SetWindowSubclass(label, &CLinkLabel::Receive, kSubclassId, reinterpret_cast<DWORD_PTR>(this));
    MakeFont();
    FitToText();
}

void CLinkLabel::Detach() {
    if (m_window != nullptr) {
        RemoveWindowSubclass(m_window, &CLinkLabel::Receive, kSubclassId);
        m_window = nullptr;
    }
    if (m_font != nullptr) {
        DeleteObject(m_font);
        m_font = nullptr;
    }
}

void CLinkLabel::SetTarget(std::wstring target) {
    m_target = std::move(target);
}

void CLinkLabel::SetHoverCursor(const CHoverCursor* cursor) {
    m_cursor = cursor;
}

void CLinkLabel::MakeFont() {
    LOGFONTW font = {};
    auto* base = reinterpret_cast<HGDIOBJ>(SendMessageW(m_window, WM_GETFONT, 0, 0));
    GetObjectW(base != nullptr ? base : GetStockObject(DEFAULT_GUI_FONT), sizeof font, &font);
    font.lfUnderline = TRUE;
    if (m_font != nullptr) {
        DeleteObject(m_font);
    }
    m_font = CreateFontIndirectW(&font);
}

std::wstring CLinkLabel::Text() const {
    std::array<wchar_t, kLongestText> text = {};
    GetWindowTextW(m_window, text.data(), static_cast<int>(text.size()));
    return text.data();
}

/// Makes the label as wide as its text and the focus rectangle around it. The height stays.
void CLinkLabel::FitToText() const {
    const HDC dc = GetDC(m_window);
    const HGDIOBJ former = SelectObject(dc, m_font);
    RECT extent = {};
    DrawTextW(dc, Text().c_str(), -1, &extent, DT_SINGLELINE | DT_CALCRECT);
    SelectObject(dc, former);
    ReleaseDC(m_window, dc);
    RECT window;
    GetWindowRect(m_window, &window);
    SetWindowPos(m_window, nullptr, 0, 0, extent.right + 2 * Scaled(m_window, kMargin), window.bottom - window.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    Redraw();
}

void CLinkLabel::Redraw() const {
    InvalidateRect(m_window, nullptr, TRUE);
}

LRESULT CALLBACK CLinkLabel::Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR /*id*/,
                                     DWORD_PTR self) {
    auto* label = reinterpret_cast<CLinkLabel*>(self);
    if (message == WM_NCDESTROY) {
        label->Detach();
        return DefSubclassProc(window, message, wParam, lParam);
    }
    return label->OnMessage(message, wParam, lParam);
}

LRESULT CLinkLabel::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT: {
            PAINTSTRUCT paint;
            Paint(BeginPaint(m_window, &paint));
            EndPaint(m_window, &paint);
            return 0;
        }
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_NCHITTEST:
            return HTCLIENT;
        case WM_GETDLGCODE:
            return IsOpeningKeyMessage(reinterpret_cast<const MSG*>(lParam)) ? DLGC_WANTMESSAGE : 0;
        case WM_SETCURSOR:
            if (m_cursor != nullptr && m_cursor->Show()) {
                return TRUE;
            }
            break;
        case WM_KEYDOWN:
            return OnKey(wParam);
        case WM_LBUTTONDOWN:
            SetFocus(m_window);
            SetCapture(m_window);
            m_isPressed = true;
            return 0;
        case WM_CAPTURECHANGED:
            m_isPressed = false;
            return 0;
        case WM_LBUTTONUP:
            OnRelease(lParam);
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_UPDATEUISTATE:
        case WM_ENABLE: {
            const LRESULT result = DefSubclassProc(m_window, message, wParam, lParam);
            Redraw();
            return result;
        }
        case WM_SETTEXT:
        case WM_SETFONT: {
            const LRESULT result = DefSubclassProc(m_window, message, wParam, lParam);
            MakeFont();
            FitToText();
            return result;
        }
        default:
            break;
    }
    return DefSubclassProc(m_window, message, wParam, lParam);
}

LRESULT CLinkLabel::OnKey(WPARAM key) {
    if (IsOpeningKey(key)) {
        OpenHyperlink(GetParent(m_window), m_target);
        return 0;
    }
    return DefSubclassProc(m_window, WM_KEYDOWN, key, 0);
}

void CLinkLabel::OnRelease(LPARAM position) {
    RECT client;
    GetClientRect(m_window, &client);
    const POINT point = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
    const bool isClick = m_isPressed && PtInRect(&client, point) != FALSE;
    ReleaseCapture();
    if (isClick) {
        OpenHyperlink(GetParent(m_window), m_target);
    }
}

void CLinkLabel::Paint(HDC dc) const {
    RECT client;
    GetClientRect(m_window, &client);
    const auto brush = reinterpret_cast<HBRUSH>(SendMessageW(
        GetParent(m_window), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(m_window)));
    FillRect(dc, &client, brush != nullptr ? brush : GetSysColorBrush(COLOR_BTNFACE));
    const HGDIOBJ former = SelectObject(dc, m_font);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, IsWindowEnabled(m_window) != FALSE ? LinkColour() : GetSysColor(COLOR_GRAYTEXT));
    DrawTextW(dc, Text().c_str(), -1, &client, DT_SINGLELINE | DT_VCENTER | DT_CENTER);
    SelectObject(dc, former);
    const LRESULT hints = SendMessageW(m_window, WM_QUERYUISTATE, 0, 0);
    if (GetFocus() == m_window && (hints & UISF_HIDEFOCUS) == 0) {
        SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
        DrawFocusRect(dc, &client);
    }
}

}  // namespace vantrel
