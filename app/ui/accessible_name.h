// Names of controls for assistive tools, such as screen readers.
#pragma once

#include <windows.h>

namespace vantrel {

/// Sets the name of a control for assistive tools. Does nothing if the system has no such service.
void SetAccessibleName(HWND control, const wchar_t* name);

}  // namespace vantrel
