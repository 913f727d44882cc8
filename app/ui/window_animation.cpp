// A frame is drawn by inverting the screen and removed by inverting it again, so that no window has to repaint.
#include "app/ui/window_animation.h"

#include <algorithm>

namespace vantrel {
namespace {

constexpr int kFrames = 8;
constexpr DWORD kFrameTime = 15;         // milliseconds
constexpr ULONGLONG kLongestPlay = 200;  // milliseconds; fewer frames on a slow screen
constexpr int kThickness = 3;            // pixels

/// Shrinks an interval to step / kFrames of its length around its centre.
void Shrink(LONG& low, LONG& high, int step) {
    const LONG cut = (high - low) * (kFrames - step) / (2 * kFrames);
    low += cut;
    high -= cut;
}

void InvertFrame(HDC dc, const RECT& frame) {
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    const int thickness = std::min({kThickness, width / 2, height / 2});
    const int inner = height - 2 * thickness;
    PatBlt(dc, frame.left, frame.top, width, thickness, DSTINVERT);
    PatBlt(dc, frame.left, frame.bottom - thickness, width, thickness, DSTINVERT);
    PatBlt(dc, frame.left, frame.top + thickness, thickness, inner, DSTINVERT);
    PatBlt(dc, frame.right - thickness, frame.top + thickness, thickness, inner, DSTINVERT);
    GdiFlush();
}

}  // namespace

bool AreAnimationsOn() {
    BOOL areContentsAnimated = TRUE;
    ANIMATIONINFO windows = {};
    windows.cbSize = sizeof windows;
    windows.iMinAnimate = TRUE;
    SystemParametersInfoW(SPI_GETCLIENTAREAANIMATION, 0, &areContentsAnimated, 0);
    SystemParametersInfoW(SPI_GETANIMATION, sizeof windows, &windows, 0);
    return areContentsAnimated != FALSE && windows.iMinAnimate != 0 && GetSystemMetrics(SM_REMOTESESSION) == 0;
}

std::vector<RECT> CWindowAnimation::Frames(const RECT& rectangle) const {
    std::vector<RECT> frames;
    if ((m_style & kAnimateZoom) == 0 || IsRectEmpty(&rectangle) != FALSE) {
        return frames;
    }
    for (int step = 1; step <= kFrames; ++step) {
        RECT frame = rectangle;
        if ((m_style & kAnimateWidth) != 0) {
            Shrink(frame.left, frame.right, step);
        }
        if ((m_style & kAnimateHeight) != 0) {
            Shrink(frame.top, frame.bottom, step);
        }
        frames.push_back(frame);
    }
    return frames;
}

void CWindowAnimation::Play(const std::vector<RECT>& frames) {
    const HDC screen = GetDC(nullptr);
    if (screen == nullptr) {
        return;
    }
    const ULONGLONG start = GetTickCount64();
    for (const RECT& frame : frames) {
        if (GetTickCount64() - start >= kLongestPlay) {
            break;
        }
        InvertFrame(screen, frame);
        Sleep(kFrameTime);
        InvertFrame(screen, frame);
    }
    ReleaseDC(nullptr, screen);
}

void CWindowAnimation::Open(HWND window, const RECT& rectangle) const {
    if (IsWindow(window) != FALSE && AreAnimationsOn()) {
        Play(Frames(rectangle));
    }
}

void CWindowAnimation::Close(HWND window, const RECT& rectangle) const {
    if (IsWindow(window) != FALSE && IsIconic(window) == FALSE && AreAnimationsOn()) {
        std::vector<RECT> frames = Frames(rectangle);
        std::reverse(frames.begin(), frames.end());
        Play(frames);
    }
}

}  // namespace vantrel
