// The short animation of a window that opens or closes: a frame that grows out of its centre or shrinks into it.
#pragma once

#include <windows.h>

#include <vector>

namespace vantrel {

/// Ways to animate; the frame changes in the directions named. Other numbers are taken bit by bit.
enum EAnimationStyle { kAnimateNothing = 0, kAnimateWidth = 1, kAnimateHeight = 2, kAnimateZoom = 3 };

class CWindowAnimation {
public:
    /// One of EAnimationStyle.
    void SetStyle(int style) { m_style = style; }

    /// Draw the frames over the screen, for a quarter of a second at most. Nothing is done when the user has turned
    /// animations off, on a remote session, or for an empty rectangle. The rectangle is in pixels of the screen.
    void Open(HWND window, const RECT& rectangle) const;
    void Close(HWND window, const RECT& rectangle) const;

    /// The frames of the opening animation, the last of which is the rectangle itself.
    std::vector<RECT> Frames(const RECT& rectangle) const;

    /// Draws the frames one after the other, whatever the settings are, and leaves the screen as it was.
    static void Play(const std::vector<RECT>& frames);

private:
    int m_style = kAnimateZoom;
};

/// Whether the system is set to animate windows and their contents.
bool AreAnimationsOn();

}  // namespace vantrel
