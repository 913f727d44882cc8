// Queries of windows of another process. They throw CDriveFailure if a window does not answer within 30 s.
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
/// The first of them for which the condition is true; null if there is none.
HWND FindWindowOf(DWORD processId, const std::function<bool(HWND)>& condition);
/// All child windows, at any depth.
std::vector<HWND> ChildrenOf(HWND window);

/// Presses a button and returns at once. Throws CDriveFailure if it is greyed or hidden.
void PressButton(HWND button);

/// Presses a button and waits until its window has handled that.
void PressButtonAndWait(HWND button);

}  // namespace vantrel::test
