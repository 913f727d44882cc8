#include "app/ui/field_frame.h"

#include <commctrl.h>

#include "app/ui/scaling.h"

namespace vantrel {
namespace {

constexpr UINT_PTR kSubclassId = 3;
constexpr int kTextMargin = 3;

/// Paints the part of a window that is not its client area.
void PaintMargins(HWND window) {
    RECT frame{};
    RECT client{};
    GetWindowRect(window, &frame);
    GetClientRect(window, &client);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    OffsetRect(&client, -frame.left, -frame.top);
    OffsetRect(&frame, -frame.left, -frame.top);
    const HDC dc = GetWindowDC(window);
    ExcludeClipRect(dc, client.left, client.top, client.right, client.bottom);
    FillRect(dc, &frame, GetSysColorBrush(COLOR_BTNFACE));
    ReleaseDC(window, dc);
}

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    switch (message) {
        case WM_NCCALCSIZE: {
            const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
            InflateRect(reinterpret_cast<RECT*>(lParam), -Scaled(window, kTextMargin), 0);
            return result;
        }
        case WM_NCPAINT:
            PaintMargins(window);
            PaintFieldFrame(window);
            return 0;
        default:
            return DefSubclassProc(window, message, wParam, lParam);
    }
}

}  // namespace

void PaintFieldFrame(HWND window) {
    RECT frame{};
    GetWindowRect(window, &frame);
    OffsetRect(&frame, -frame.left, -frame.top);
    const HDC dc = GetWindowDC(window);
    FrameRect(dc, &frame, GetSysColorBrush(COLOR_BTNSHADOW));
    ReleaseDC(window, dc);
}

void AttachFieldFrame(HWND control) {
    SetWindowSubclass(control, Receive, kSubclassId, 0);
    SetWindowPos(control, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
}

}  // namespace vantrel
