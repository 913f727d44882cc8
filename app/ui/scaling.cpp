#include "app/ui/scaling.h"

namespace vantrel {

int ResolutionOf(HWND window) {
    // Missing before Windows 10, where all displays have the same resolution.
    using GetDpiForWindowFunction = UINT(WINAPI*)(HWND);
    static const auto getDpiForWindow = reinterpret_cast<GetDpiForWindowFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
    if (getDpiForWindow != nullptr) {
        const UINT resolution = getDpiForWindow(window);
        if (resolution != 0) {
            return static_cast<int>(resolution);
        }
    }
    const HDC screen = GetDC(nullptr);
    const int resolution = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return resolution;
}

int Scaled(HWND window, int pixels) {
    return MulDiv(pixels, ResolutionOf(window), USER_DEFAULT_SCREEN_DPI);
}

}  // namespace vantrel
