// The CUE sheet that tells burners and emulators what a raw image holds.
#pragma once

#include <string>

namespace vantrel {

/// The sheet of an image with one Mode 2 track, for the image's file name. Lines end in "\n".
std::string CueSheetOf(const std::string& imageName);

/// Whether a sheet can name a file of this name at all: quotes and line breaks have no spelling in it.
bool CanStandInCueSheet(const std::string& imageName);

}  // namespace vantrel
