// Pictures of the screen for people to look at, taken by the script that runs the driver.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel::test {

enum class EPictured {
    Still,   ///< Nothing moves: the picture is taken when two in a row are alike.
    Moving,  ///< At once.
};

/// Asks the script that reads this program's standard output for a picture of a rectangle of the screen, and waits
/// until it is taken. `name` becomes the name of the PNG file. Without such a script (VANTREL_PICTURES is not set)
/// nothing happens.
void TakePicture(const std::string& name, const RECT& rectangle, EPictured pictured);

}  // namespace vantrel::test
