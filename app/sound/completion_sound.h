// The done message of a conversion and the sound that plays while it is open.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// Shows `message` in a message box of `owner` and repeats the WAV file at `path` until the box is closed. If the sound
/// cannot be played, a second line of the message says so.
void PlayCompletionSound(HWND owner, const std::wstring& path, const std::wstring& message);

}  // namespace vantrel
