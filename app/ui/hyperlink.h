// Opening a web page or a mail address with the program that the system has for it.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// The command line that opens `target` with the command of an association: its "%1" is the target; where the command
/// names no place for it, the target follows at the end.
std::wstring CommandLineFor(const std::wstring& command, const std::wstring& target);

/// The command that opens web pages, found through the association of ".htm"; empty when there is none.
std::wstring BrowserCommand();

/// Asks the system to open the target, and failing that, the program that opens ".htm" files. Returns an empty text, or
/// what the system says about the failure.
std::wstring OpenTarget(HWND owner, const std::wstring& target);

/// The same; a failure is told in a message box.
void OpenHyperlink(HWND owner, const std::wstring& target);

}  // namespace vantrel
