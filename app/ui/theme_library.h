// The system's library of visual styles, loaded at run time. Without it, or with styles turned off, the controls use
// classic drawing.
#pragma once

// The second header needs what the first one declares.
// clang-format off
#include <windows.h>
#include <uxtheme.h>
// clang-format on

namespace vantrel {

/// The functions of UxTheme.dll that the controls use: all of them, or none if one is missing.
class CThemeLibrary {
public:
    CThemeLibrary();
    ~CThemeLibrary();
    CThemeLibrary(const CThemeLibrary&) = delete;
    CThemeLibrary& operator=(const CThemeLibrary&) = delete;

    /// Whether the controls are drawn with a visual style. False in high contrast, because classic drawing follows its
    /// colours more faithfully.
    bool IsActive() const;

    /// Returns null if styles are not active or there is none for the class. To be closed by Close.
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
