// Pictures of the screen for people to look at, taken by the script that runs the driver.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel::test {

/// Asks the script that reads this program's standard output for a picture of the rectangle, which is widened by the
/// title bar and borders that the window manager adds, and waits until it is taken. `name` becomes the name of the PNG
/// file. Without such a script (VANTREL_PICTURES is not set) nothing happens.
void TakePicture(const std::string& name, const RECT& rectangle);

}  // namespace vantrel::test
