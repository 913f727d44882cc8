// Opens a web page or a mail address with the associated program.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// The command line that opens `target` with the command of an association: "%1" is replaced by the target, or the
/// target is appended if there is no "%1".
std::wstring CommandLineFor(const std::wstring& command, const std::wstring& target);

/// The command that opens web pages, by the association of ".htm". Empty if there is none.
std::wstring BrowserCommand();

/// Opens the target through the shell or, if that fails, with the program that opens ".htm" files. Returns an empty
/// text or the system's error message.
std::wstring OpenTarget(HWND owner, const std::wstring& target);

/// The same. Shows failures in a message box.
void OpenHyperlink(HWND owner, const std::wstring& target);

}  // namespace vantrel
