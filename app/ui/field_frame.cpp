#include "app/ui/field_frame.h"

#include <commctrl.h>

namespace vantrel {
namespace {

constexpr UINT_PTR kSubclassId = 3;

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    if (message == WM_NCPAINT) {
        PaintFieldFrame(window);
        return 0;
    }
    return DefSubclassProc(window, message, wParam, lParam);
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
}

}  // namespace vantrel
