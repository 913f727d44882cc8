// The status bar with its panes. Anyone who reads a pane gets its latest text. Only the painting is throttled, because
// painting for every block would take longer than converting it.
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
    /// Sets the initial texts of the panes to entries of the string table.
    void SetIndicators(std::initializer_list<UINT> stringIds);
    /// Sets the widths of all panes but the last, in pixels of a display at 100 %. The last pane takes the rest.
    void SetPaneWidths(std::initializer_list<int> widths);
    void SetBackground(COLORREF colour);
    /// Adapts the bar to a changed size or resolution of its parent.
    void Reposition();

    void SetPaneText(int pane, const std::wstring& text);
    /// Paints changes if the last painting was long enough ago.
    void PaintIfDue();
    /// Paints changes.
    void PaintNow();

private:
    static LRESULT CALLBACK BarProcedure(HWND bar, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                         DWORD_PTR self);
    void StoreTexts();
    void Paint(HDC target);
    void PaintPane(HDC context, int pane);
    int SqueezeFor(HDC context, const std::wstring& text, int width) const;

    std::array<std::wstring, kPaneCount> m_texts;
    std::array<bool, kPaneCount> m_unstored{};
    std::array<int, kPaneCount - 1> m_widths{};
    COLORREF m_background = CLR_INVALID;
    CPaintClock m_clock;
    bool m_unpainted = false;
    bool m_storing = false;
};

}  // namespace vantrel
