// The message box of the window program: it has the same icon everywhere and stays open until it is answered.
#pragma once

#include <windows.h>

#include <string>

#include "app/held_quit.h"

namespace vantrel {

/// The name of the program.
inline constexpr wchar_t kMessageCaption[] = L"quorn_vantrel_v5.0";

/// Shows a text with the information icon and an OK button. Returns when the box is closed.
inline void ShowMessage(HWND owner, const std::wstring& text, const std::wstring& caption = kMessageCaption) {
    const CHeldQuit held;
    MessageBoxW(owner, text.c_str(), caption.c_str(), MB_OK | MB_ICONINFORMATION);
}

}  // namespace vantrel
