// The one message box of the window program, so that all its boxes look alike.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// The caption of every message box, which is the program's name.
inline constexpr wchar_t kMessageCaption[] = L"quorn_vantrel_v5.0";

/// Shows a text with the information icon and an OK button, and returns when the box is closed.
inline void ShowMessage(HWND owner, const std::wstring& text) {
    MessageBoxW(owner, text.c_str(), kMessageCaption, MB_OK | MB_ICONINFORMATION);
}

}  // namespace vantrel
