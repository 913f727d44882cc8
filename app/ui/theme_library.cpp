// Only the DLL in the system folder is loaded, never one of the same name beside the program.
#include "app/ui/theme_library.h"

namespace vantrel {
namespace {

template <typename Function>
bool Find(HMODULE library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
}

}  // namespace

CThemeLibrary::CThemeLibrary() : m_library(LoadLibraryExW(L"UxTheme.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)) {
    m_isComplete = m_library != nullptr && Find(m_library, "OpenThemeData", m_openThemeData) &&
                   Find(m_library, "CloseThemeData", m_closeThemeData) &&
                   Find(m_library, "DrawThemeBackground", m_drawThemeBackground) &&
                   Find(m_library, "DrawThemeParentBackground", m_drawThemeParentBackground) &&
                   Find(m_library, "DrawThemeText", m_drawThemeText) && Find(m_library, "IsAppThemed", m_isAppThemed) &&
                   Find(m_library, "IsThemeActive", m_isThemeActive);
}

CThemeLibrary::~CThemeLibrary() {
    if (m_library != nullptr) {
        FreeLibrary(m_library);
    }
}

bool CThemeLibrary::IsActive() const {
    return m_isComplete && !IsHighContrast() && m_isAppThemed() != FALSE && m_isThemeActive() != FALSE;
}

HTHEME CThemeLibrary::Open(HWND window, const wchar_t* classes) const {
    return IsActive() ? m_openThemeData(window, classes) : nullptr;
}

void CThemeLibrary::Close(HTHEME theme) const {
    if (theme != nullptr) {
        m_closeThemeData(theme);
    }
}

void CThemeLibrary::DrawBackground(HTHEME theme, HDC dc, int part, int state, const RECT& rectangle) const {
    m_drawThemeBackground(theme, dc, part, state, &rectangle, nullptr);
}

void CThemeLibrary::DrawParentBackground(HWND window, HDC dc, RECT rectangle) const {
    m_drawThemeParentBackground(window, dc, &rectangle);
}

void CThemeLibrary::DrawCaption(HTHEME theme, HDC dc, int part, int state, const wchar_t* text, DWORD format,
                                const RECT& rectangle) const {
    m_drawThemeText(theme, dc, part, state, text, -1, format, 0, &rectangle);
}

bool IsHighContrast() {
    HIGHCONTRASTW contrast = {};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) != FALSE &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

}  // namespace vantrel
