// What can be asked of any window of another process. A window that does not answer within 30 s is a CDriveFailure.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace vantrel::test {

/// SendMessage with a time limit.
LRESULT Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

/// The text of a window or control, as UTF-8.
std::string TextOf(HWND window);
void SetTextOf(HWND window, const std::string& text);
std::wstring ClassOf(HWND window);

/// The visible top-level windows of a process, topmost first.
std::vector<HWND> WindowsOf(DWORD processId);
/// The first of them that fulfils the condition; null when none does.
HWND FindWindowOf(DWORD processId, const std::function<bool(HWND)>& condition);
/// All windows within a window, at any depth.
std::vector<HWND> ChildrenOf(HWND window);

/// A button is pressed without waiting for what it does. A CDriveFailure when it is greyed or hidden.
void PressButton(HWND button);

}  // namespace vantrel::test
