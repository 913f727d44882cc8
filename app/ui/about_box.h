// The About box.
#pragma once

#include <windows.h>

namespace vantrel {

/// Shows the box over its owner and returns when it is closed.
void RunAboutBox(HWND owner);

/// What the link with this control id (IDC_ABOUT_WEB_LINK, IDC_ABOUT_MAIL_LINK) opens; null for any other control.
const wchar_t* AboutLinkTarget(int controlId);

}  // namespace vantrel
