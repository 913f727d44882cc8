// The end of a conversion as the user notices it: the done message, with the chosen sound as long as it stands.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// Shows `message` in a message box of `owner` and repeats the WAV file at `path` until the box is closed. When the
/// sound cannot be played the box says so under the message.
void PlayCompletionSound(HWND owner, const std::wstring& path, const std::wstring& message);

}  // namespace vantrel
