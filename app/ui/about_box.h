// The About box.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// Shows the box over `owner`. Returns when it is closed.
void RunAboutBox(HWND owner);

/// The file that a link of the box opens, by the link's control id. Empty for other controls.
std::wstring AboutLinkTarget(int controlId);

}  // namespace vantrel
