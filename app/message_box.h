// The message box of the window program: caption and icon are the same everywhere.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// The name of the program.
inline constexpr wchar_t kMessageCaption[] = L"quorn_vantrel_v5.0";

/// Shows a text with the information icon and an OK button. Returns when the box is closed.
inline void ShowMessage(HWND owner, const std::wstring& text) {
    MessageBoxW(owner, text.c_str(), kMessageCaption, MB_OK | MB_ICONINFORMATION);
}

}  // namespace vantrel
