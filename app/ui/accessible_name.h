// Names that assistive tools read aloud for controls without a text of their own.
#pragma once

#include <windows.h>

namespace vantrel {

/// Gives a control a name for assistive tools. Where the system has no such service, nothing happens.
void SetAccessibleName(HWND control, const wchar_t* name);

}  // namespace vantrel
