// The progress bar of a conversion: a window over the status line of the dialog, filled with a bitmap, optionally with
// a text. It answers the messages of native progress bars that read range and position.
#pragma once

#include <cstdint>

#include "app/ui/paint_clock.h"
#include "app/ui/progress_text.h"
#include "app/ui/window.h"

namespace vantrel {

class CTimedProgressCtrl : public CWindow {
public:
    /// Creates the bar over `anchor`, as its sibling, with the range 0 to `total` and the step 1. The bitmap is a
    /// resource of the program.
    CTimedProgressCtrl(HWND anchor, std::int32_t total, int fillBitmapId, EProgressText textMode = EProgressText::None);
    CTimedProgressCtrl(const CTimedProgressCtrl&) = delete;
    CTimedProgressCtrl& operator=(const CTimedProgressCtrl&) = delete;
    /// Destroys the window and frees the bitmap.
    ~CTimedProgressCtrl();

    /// Advances by one step within the range. Returns the previous position, or 0 if the window no longer exists.
    std::int32_t StepIt(bool redraw);
    /// Moves to a position within the range. Returns the same as StepIt.
    std::int32_t SetPosition(std::int32_t position, bool redraw);
    std::int32_t Position() const { return m_progress.position; }
    std::int32_t Range() const { return m_progress.upper; }

    void SetCaptions(const SProgressCaptions& captions) { m_captions = captions; }

    /// Paints changes if the last painting was long enough ago.
    void PaintIfDue();
    /// Paints changes.
    void PaintNow();

private:
    static LRESULT CALLBACK BarProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT RangeAnswer(bool lower, LPARAM range) const;
    void Paint(HDC target);
    void PaintFill(HDC context, const RECT& filled) const;
    void PaintText(HDC context, const RECT& client) const;
    RECT FilledPart(const RECT& client) const;

    HWND m_anchor;
    SProgress m_progress;
    std::int32_t m_step = 1;
    std::int32_t m_previous = 0;
    HBITMAP m_fill;
    bool m_vertical = false;
    EProgressText m_textMode;
    std::int64_t m_start;
    SProgressCaptions m_captions;
    CPaintClock m_clock;
    bool m_unpainted = false;
};

}  // namespace vantrel
