// The system's library of visual styles, found at run time: where it is missing, or where styles are off, the controls
// draw themselves the classic way.
#pragma once

// The second header needs what the first one declares.
// clang-format off
#include <windows.h>
#include <uxtheme.h>
// clang-format on

namespace vantrel {

/// The functions of UxTheme.dll that the controls draw with. Either all of them are there or none is.
class CThemeLibrary {
public:
    CThemeLibrary();
    ~CThemeLibrary();
    CThemeLibrary(const CThemeLibrary&) = delete;
    CThemeLibrary& operator=(const CThemeLibrary&) = delete;

    /// Whether this program's controls are drawn with a visual style now. False in high contrast, whose colours are
    /// followed more faithfully by classic drawing.
    bool IsActive() const;

    /// Null where styles are not active or the class has none. Closed by Close.
    HTHEME Open(HWND window, const wchar_t* classes) const;
    void Close(HTHEME theme) const;

    void DrawBackground(HTHEME theme, HDC dc, int part, int state, const RECT& rectangle) const;
    void DrawParentBackground(HWND window, HDC dc, RECT rectangle) const;
    void DrawCaption(HTHEME theme, HDC dc, int part, int state, const wchar_t* text, DWORD format,
                     const RECT& rectangle) const;

private:
    HMODULE m_library;
    decltype(&::OpenThemeData) m_openThemeData = nullptr;
    decltype(&::CloseThemeData) m_closeThemeData = nullptr;
    decltype(&::DrawThemeBackground) m_drawThemeBackground = nullptr;
    decltype(&::DrawThemeParentBackground) m_drawThemeParentBackground = nullptr;
    decltype(&::DrawThemeText) m_drawThemeText = nullptr;
    decltype(&::IsAppThemed) m_isAppThemed = nullptr;
    decltype(&::IsThemeActive) m_isThemeActive = nullptr;
    bool m_isComplete = false;
};

/// Whether the user asked the system for high contrast.
bool IsHighContrast();

}  // namespace vantrel
