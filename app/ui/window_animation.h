// The animation of a window that opens or closes: a frame that grows from the centre or shrinks to it.
#pragma once

#include <windows.h>

#include <vector>

namespace vantrel {

/// The directions in which the frame grows, as bits.
enum EAnimationStyle { kAnimateNothing = 0, kAnimateWidth = 1, kAnimateHeight = 2, kAnimateZoom = 3 };

class CWindowAnimation {
public:
    /// One of EAnimationStyle.
    void SetStyle(int style) { m_style = style; }

    /// Draw the frames on the screen, for a quarter of a second at most. Do nothing if the user has turned animations
    /// off, in a remote session, or for an empty rectangle. The rectangle is in screen coordinates.
    void Open(HWND window, const RECT& rectangle) const;
    void Close(HWND window, const RECT& rectangle) const;

    /// The frames of the opening animation. The last one is the rectangle itself.
    std::vector<RECT> Frames(const RECT& rectangle) const;

    /// Draws and removes the frames one after the other, regardless of the system's settings.
    static void Play(const std::vector<RECT>& frames);

private:
    int m_style = kAnimateZoom;
};

/// Whether the system's settings allow animations.
bool AreAnimationsOn();

}  // namespace vantrel
