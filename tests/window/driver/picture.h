// Pictures of the screen for visual inspection, taken by the script that runs the driver.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel::test {

enum class EPictured {
    Still,   ///< Wait until two pictures in a row are equal.
    Moving,  ///< Take the picture at once.
};

/// Asks the script, through the standard output, for a picture of a rectangle of the screen, and waits until it is
/// taken. `name` becomes the name of the PNG file. Does nothing without the script (VANTREL_PICTURES is not set).
void TakePicture(const std::string& name, const RECT& rectangle, EPictured pictured);

}  // namespace vantrel::test
