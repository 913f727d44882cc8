// Converts sizes from pixels of a display at 100 %.
#pragma once

#include <windows.h>

namespace vantrel {

/// The resolution of the display that shows `window`, in dots per inch; 96 is 100 %.
int ResolutionOf(HWND window);

/// `pixels` of a display at 100 % on the display that shows `window`.
int Scaled(HWND window, int pixels);

}  // namespace vantrel
