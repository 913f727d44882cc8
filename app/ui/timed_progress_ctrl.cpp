#include "app/ui/timed_progress_ctrl.h"

#include <commctrl.h>

#include <algorithm>

#include "app/ui/buffered_paint.h"
#include "app/ui/field_frame.h"
#include "files/utf.h"

namespace vantrel {
namespace {

constexpr wchar_t kClassName[] = L"VantrelTimedProgress";

/// The answer to assistive tools that ask which native control a window resembles: a progress bar.
constexpr LPARAM kQueryClassNameIndex = static_cast<LONG>(0xFFFFFFF4);
constexpr LRESULT kReadAsProgressBar = 65536 + 13;

/// The local time as a FILETIME.
std::int64_t LocalNow() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    FILETIME ticks{};
    SystemTimeToFileTime(&now, &ticks);
    return (static_cast<std::int64_t>(ticks.dwHighDateTime) << 32) | ticks.dwLowDateTime;
}

}  // namespace

CTimedProgressCtrl::CTimedProgressCtrl(HWND anchor, std::int32_t total, int fillBitmapId, EProgressText textMode)
    : m_anchor(anchor),
      m_progress{0, total, 0},
      m_fill(static_cast<HBITMAP>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(fillBitmapId), IMAGE_BITMAP, 0,
                                             0, LR_CREATEDIBSECTION))),
      m_textMode(textMode),
      m_start(LocalNow()) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSW barClass{};
    barClass.lpfnWndProc = BarProcedure;
    barClass.hInstance = instance;
    barClass.hCursor = LoadCursorW(nullptr, IDC_WAIT);
    barClass.lpszClassName = kClassName;
    RegisterClassW(&barClass);

    const HWND parent = GetParent(anchor);
    RECT rect = CWindow(anchor).ScreenRect();
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    m_vertical = height > width;
    // Without WS_CLIPSIBLINGS, because the group box around the bar would clip all of it.
    CreateWindowExW(WS_EX_STATICEDGE, kClassName, nullptr, WS_CHILD, rect.left, rect.top, width, height, parent,
                    nullptr, instance, this);
    // Above the anchor and directly behind the group box, whose caption is the bar's name for assistive tools.
    SetWindowPos(m_window, GetWindow(anchor, GW_HWNDPREV), 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
    UpdateWindow(m_window);
}

CTimedProgressCtrl::~CTimedProgressCtrl() {
    if (Exists()) {
        DestroyWindow(m_window);
    }
    DeleteObject(m_fill);
}

std::int32_t CTimedProgressCtrl::StepIt(bool redraw) {
    const std::int64_t next = std::int64_t{m_progress.position} + m_step;
    return SetPosition(static_cast<std::int32_t>(std::clamp<std::int64_t>(next, m_progress.lower, m_progress.upper)),
                       redraw);
}

std::int32_t CTimedProgressCtrl::SetPosition(std::int32_t position, bool redraw) {
    if (m_window == nullptr) {
        return 0;
    }
    m_previous = m_progress.position;
    m_progress.position = std::clamp(position, m_progress.lower, std::max(m_progress.lower, m_progress.upper));
    m_unpainted = true;
    if (redraw) {
        PaintIfDue();
    }
    return m_previous;
}

void CTimedProgressCtrl::PaintIfDue() {
    if (m_unpainted && m_clock.IsDue()) {
        PaintNow();
    }
}

void CTimedProgressCtrl::PaintNow() {
    if (m_unpainted && m_window != nullptr) {
        m_unpainted = false;
        InvalidateRect(m_window, nullptr, FALSE);
        UpdateWindow(m_window);
        m_clock.Painted();
    }
}

LRESULT CALLBACK CTimedProgressCtrl::BarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        const auto* const creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        auto* const created = static_cast<CTimedProgressCtrl*>(creation->lpCreateParams);
        created->Attach(window);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
    }
    auto* const bar = reinterpret_cast<CTimedProgressCtrl*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (bar == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        bar->Attach(nullptr);
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return bar->OnMessage(message, wParam, lParam);
}

LRESULT CTimedProgressCtrl::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case PBM_GETPOS:
            return m_progress.position;
        case PBM_GETRANGE:
            return RangeAnswer(wParam != 0, lParam);
        case PBM_GETSTEP:
            return m_step;
        case WM_GETOBJECT:
            if (static_cast<LONG>(lParam) == kQueryClassNameIndex) {
                return kReadAsProgressBar;
            }
            break;
        case WM_NCPAINT:
            PaintFieldFrame(m_window);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_PAINT: {
            PAINTSTRUCT paint{};
            Paint(BeginPaint(m_window, &paint));
            EndPaint(m_window, &paint);
            return 0;
        }
        default:
            break;
    }
    return DefWindowProcW(m_window, message, wParam, lParam);
}

LRESULT CTimedProgressCtrl::RangeAnswer(bool lower, LPARAM range) const {
    if (range != 0) {
        *reinterpret_cast<PBRANGE*>(range) = {m_progress.lower, m_progress.upper};
    }
    return lower ? m_progress.lower : m_progress.upper;
}

RECT CTimedProgressCtrl::FilledPart(const RECT& client) const {
    RECT filled = client;
    if (m_vertical) {
        filled.top = client.bottom - static_cast<LONG>(m_progress.Part(client.bottom - client.top));
    } else {
        filled.right = client.left + static_cast<LONG>(m_progress.Part(client.right - client.left));
    }
    return filled;
}

void CTimedProgressCtrl::Paint(HDC target) {
    RECT client{};
    GetClientRect(m_window, &client);
    const CBufferedPaint buffer(target, client);
    const HDC context = buffer.Context();
    FillRect(context, &client, GetSysColorBrush(COLOR_WINDOW));
    const RECT filled = FilledPart(client);
    if (IsRectEmpty(&filled) == FALSE) {
        PaintFill(context, filled);
    }
    if (m_textMode != EProgressText::None) {
        PaintText(context, client);
    }
}

/// Tiles the bitmap along the bar, stretched to the bar's thickness.
void CTimedProgressCtrl::PaintFill(HDC context, const RECT& filled) const {
    BITMAP bitmap{};
    if (m_fill == nullptr || GetObjectW(m_fill, sizeof bitmap, &bitmap) == 0) {
        FillRect(context, &filled, GetSysColorBrush(COLOR_HIGHLIGHT));
        return;
    }
    const HDC source = CreateCompatibleDC(context);
    const HGDIOBJ oldBitmap = SelectObject(source, m_fill);
    const int saved = SaveDC(context);
    IntersectClipRect(context, filled.left, filled.top, filled.right, filled.bottom);
    SetStretchBltMode(context, HALFTONE);
    const int width = filled.right - filled.left;
    const int height = filled.bottom - filled.top;
    if (m_vertical) {
        const int length = std::max(1, MulDiv(bitmap.bmHeight, width, bitmap.bmWidth));
        for (int y = filled.bottom - length; y > filled.top - length; y -= length) {
            StretchBlt(context, filled.left, y, width, length, source, 0, 0, bitmap.bmWidth, bitmap.bmHeight, SRCCOPY);
        }
    } else {
        const int length = std::max(1, MulDiv(bitmap.bmWidth, height, bitmap.bmHeight));
        for (int x = filled.left; x < filled.right; x += length) {
            StretchBlt(context, x, filled.top, length, height, source, 0, 0, bitmap.bmWidth, bitmap.bmHeight, SRCCOPY);
        }
    }
    RestoreDC(context, saved);
    SelectObject(source, oldBitmap);
    DeleteDC(source);
}

void CTimedProgressCtrl::PaintText(HDC context, const RECT& client) const {
    const std::wstring text = WideOf(ProgressText(m_textMode, m_progress, {m_start, LocalNow()}, m_captions));
    const auto font = reinterpret_cast<HGDIOBJ>(SendMessageW(GetParent(m_window), WM_GETFONT, 0, 0));
    const HGDIOBJ oldFont = SelectObject(context, font);
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, GetSysColor(COLOR_WINDOWTEXT));
    RECT area = client;
    DrawTextW(context, text.c_str(), -1, &area, DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(context, oldFont);
}

}  // namespace vantrel
