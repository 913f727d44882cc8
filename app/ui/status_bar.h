// The status bar with its panes. A text holds as soon as it is set, for everyone who asks for it; only the painting
// waits for the display's rate, because painting every block would cost more than converting it.
#pragma once

#include <array>
#include <initializer_list>
#include <string>

#include "app/ui/paint_clock.h"
#include "app/ui/window.h"

namespace vantrel {

class CStatusBar : public CWindow {
public:
    static constexpr int kPaneCount = 4;

    CStatusBar() = default;
    CStatusBar(const CStatusBar&) = delete;
    CStatusBar& operator=(const CStatusBar&) = delete;

    /// Creates the bar along the bottom edge of `parent`.
    bool Create(HWND parent);
    /// Gives each pane a string of the string table as its first text.
    void SetIndicators(std::initializer_list<UINT> stringIds);
    /// Sets the widths of the leading panes in pixels of a display at 100 %; the last pane takes the rest.
    void SetPaneWidths(std::initializer_list<int> widths);
    void SetBackground(COLORREF colour);
    /// Places the bar anew after its parent changed its size or resolution.
    void Reposition();

    void SetPaneText(int pane, const std::wstring& text);
    /// Paints what has changed when the last painting is long enough ago.
    void PaintIfDue();
    /// Paints what has changed.
    void PaintNow();

private:
    static LRESULT CALLBACK BarProcedure(HWND bar, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                         DWORD_PTR self);
    void StoreTexts();
    void Paint(HDC target);
    void PaintPane(HDC context, int pane);

    std::array<std::wstring, kPaneCount> m_texts;
    std::array<bool, kPaneCount> m_unstored{};
    std::array<int, kPaneCount - 1> m_widths{};
    COLORREF m_background = CLR_INVALID;
    CPaintClock m_clock;
    bool m_unpainted = false;
    bool m_storing = false;
};

}  // namespace vantrel
