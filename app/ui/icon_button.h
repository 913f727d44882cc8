// A push button with an icon beside or instead of its text, drawn with the system's visual style if there is one.
#pragma once

#include <windows.h>

#include "app/ui/button_icon.h"
#include "app/ui/hover_cursor.h"
#include "app/ui/theme_library.h"

namespace vantrel {

/// Draws a push button of a dialog template. All other functions of the button are unchanged: clicks, BM_CLICK, keys,
/// default button, tooltips. The object must live as long as the window.
class CIconButton {
public:
    CIconButton() = default;
    ~CIconButton();
    CIconButton(const CIconButton&) = delete;
    CIconButton& operator=(const CIconButton&) = delete;

    void Attach(HWND button);
    HWND Window() const { return m_window; }

    /// Sets the pointer over the button, which must outlive the button. Null: the system's own.
    void SetHoverCursor(const CHoverCursor* cursor);

    /// Sets the icon by its resource id. Its size depends on the height and the text of the button.
    void SetIcon(int iconId);

    /// The minimum size in pixels for the whole text and an icon of 16 pixels; also the answer to BCM_GETIDEALSIZE.
    SIZE IdealSize() const;

private:
    struct SLook {
        bool isPressed;
        bool isHot;
        bool isDisabled;
        bool isDefault;
        bool showsFocus;
    };

    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                    DWORD_PTR self);
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT DialogCode(WPARAM wParam, LPARAM lParam) const;
    void SetDefault(bool isDefault);
    void TrackPointer();
    void Redraw() const;
    void OpenTheme();
    void Detach();

    SLook Look() const;
    void Paint(HDC dc) const;
    void PaintBuffered(HDC target) const;
    void PaintFrame(HDC dc, RECT& content, const SLook& look) const;
    void PaintThemedFrame(HDC dc, const RECT& whole, const SLook& look) const;
    void PaintClassicFrame(HDC dc, RECT whole, const SLook& look) const;
    void PaintContent(HDC dc, const RECT& content, const SLook& look) const;
    void PaintText(HDC dc, const RECT& rectangle, const wchar_t* text, const SLook& look) const;
    int IconSizeFor(const SIZE& room, int textWidth) const;
    LONG IndentOf(const SIZE& room, int width, int icon, bool isIconAlone) const;

    HWND m_window = nullptr;
    const CHoverCursor* m_cursor = nullptr;
    CThemeLibrary m_themes;
    HTHEME m_theme = nullptr;
    mutable CButtonIcon m_icon;  // in the size of the last painting
    int m_iconId = 0;
    bool m_isDefault = false;
    bool m_isHot = false;
};

}  // namespace vantrel
