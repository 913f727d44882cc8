// The frame of fields that are no edit controls, drawn like that of the greyed edit controls beside them.
#pragma once

#include <windows.h>

namespace vantrel {

/// Draws the frame in the non-client area of a window that has a border of one pixel; the answer to WM_NCPAINT. The
/// system's own border shows only two of its four edges on a bright dialog.
void PaintFieldFrame(HWND window);

/// Gives such a frame to a control of a dialog template.
void AttachFieldFrame(HWND control);

}  // namespace vantrel
