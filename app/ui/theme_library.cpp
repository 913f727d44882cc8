// Only the DLL in the system folder is loaded, never one of the same name beside the program.
#include "app/ui/theme_library.h"

#include <array>
#include <string>

namespace vantrel {
namespace {

/// Loads a DLL by its full path, because Windows 7 without updates does not know the flag that searches only the system
/// folder.
HMODULE LoadSystemLibrary(const wchar_t* name) {
    std::array<wchar_t, MAX_PATH> folder = {};
    const UINT length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    if (length == 0 || length >= folder.size()) {
        return nullptr;
    }
    return LoadLibraryW((std::wstring(folder.data()) + L"\\" + name).c_str());
}

template <typename Function>
bool Find(HMODULE library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
}

}  // namespace

CThemeLibrary::CThemeLibrary() : m_library(LoadSystemLibrary(L"UxTheme.dll")) {
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
