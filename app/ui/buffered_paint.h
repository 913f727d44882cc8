// Flicker-free painting: into a bitmap that is copied to the window in one step.
#pragma once

#include <windows.h>

namespace vantrel {

class CBufferedPaint {
public:
    /// Provides a context for painting into `area` of `target`. The destructor copies the result there.
    CBufferedPaint(HDC target, const RECT& area)
        : m_target(target),
          m_area(area),
          m_context(CreateCompatibleDC(target)),
          m_bitmap(CreateCompatibleBitmap(target, area.right - area.left, area.bottom - area.top)),
          m_oldBitmap(SelectObject(m_context, m_bitmap)) {
        SetViewportOrgEx(m_context, -area.left, -area.top, nullptr);
    }
    CBufferedPaint(const CBufferedPaint&) = delete;
    CBufferedPaint& operator=(const CBufferedPaint&) = delete;
    ~CBufferedPaint() {
        BitBlt(m_target, m_area.left, m_area.top, m_area.right - m_area.left, m_area.bottom - m_area.top, m_context,
               m_area.left, m_area.top, SRCCOPY);
        SelectObject(m_context, m_oldBitmap);
        DeleteObject(m_bitmap);
        DeleteDC(m_context);
    }

    HDC Context() const { return m_context; }

private:
    HDC m_target;
    RECT m_area;
    HDC m_context;
    HBITMAP m_bitmap;
    HGDIOBJ m_oldBitmap;
};

}  // namespace vantrel
