// The About box.
#pragma once

#include <windows.h>

namespace vantrel {

/// Shows the box over `owner`. Returns when it is closed.
void RunAboutBox(HWND owner);

/// The target of a link of the box, by its control id. Null for other controls.
const wchar_t* AboutLinkTarget(int controlId);

}  // namespace vantrel
