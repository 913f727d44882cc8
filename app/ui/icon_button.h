// A push button with an icon beside (or instead of) its text, drawn with the system's visual style where there is one.
#pragma once

#include <windows.h>

#include "app/ui/button_icon.h"
#include "app/ui/hover_cursor.h"
#include "app/ui/theme_library.h"

namespace vantrel {

/// Takes over the drawing of a push button that a dialog template made. Everything else stays the button's own: clicks,
/// BM_CLICK, space and Enter, being the dialog's default button, tooltips. The object must live as long as the window.
class CIconButton {
public:
    CIconButton() = default;
    ~CIconButton();
    CIconButton(const CIconButton&) = delete;
    CIconButton& operator=(const CIconButton&) = delete;

    void Attach(HWND button);
    HWND Window() const { return m_window; }

    /// The pointer to show over the button; it is shared and must outlive the button. Null for the system's own.
    void SetHoverCursor(const CHoverCursor* cursor);

    /// The icon's number in the program's resources. It is shown as large as the button's height and text allow.
    void SetIcon(int iconId);

    /// The smallest size, in pixels, that shows the text and an icon of 16 pixels whole. BCM_GETIDEALSIZE gives the
    /// same.
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

    HWND m_window = nullptr;
    const CHoverCursor* m_cursor = nullptr;
    CThemeLibrary m_themes;
    HTHEME m_theme = nullptr;
    mutable CButtonIcon m_icon;  // loaded for the size that the last painting needed
    int m_iconId = 0;
    bool m_isDefault = false;
    bool m_isHot = false;
};

}  // namespace vantrel
