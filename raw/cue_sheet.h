// The CUE sheet, which tells burning programs and emulators what a raw image contains.
#pragma once

#include <string>

namespace vantrel {

/// The sheet of an image with one Mode 2 track, for the file name of the image. Lines end in "\n".
std::string CueSheetOf(const std::string& imageName);

/// Returns false if the file name contains a quote or a line break, which a sheet cannot express.
bool CanStandInCueSheet(const std::string& imageName);

}  // namespace vantrel
