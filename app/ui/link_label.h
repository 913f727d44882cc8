// A static text that opens a page, a file or an address: by a click, or by Enter or space if it has the focus.
#pragma once

#include <windows.h>

#include <string>

#include "app/ui/hover_cursor.h"

namespace vantrel {

/// Adds the function to a static text of a dialog template. The object must live as long as the window.
class CLinkLabel {
public:
    CLinkLabel() = default;
    ~CLinkLabel();
    CLinkLabel(const CLinkLabel&) = delete;
    CLinkLabel& operator=(const CLinkLabel&) = delete;

    /// Makes the label a tab stop and as wide as its text.
    void Attach(HWND label);
    void SetTarget(std::wstring target);
    const std::wstring& Target() const { return m_target; }
    void SetHoverCursor(const CHoverCursor* cursor);

private:
    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                    DWORD_PTR self);
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT OnKey(WPARAM key);
    void OnRelease(LPARAM position);
    void Paint(HDC dc) const;
    void MakeFont();
    std::wstring Text() const;
    void FitToText() const;
    void Detach();
    void Redraw() const;

    HWND m_window = nullptr;
    HFONT m_font = nullptr;  // the window's font, underlined
    const CHoverCursor* m_cursor = nullptr;
    std::wstring m_target;
    bool m_isPressed = false;
};

}  // namespace vantrel
