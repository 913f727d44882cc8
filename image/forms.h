// The forms that an image can be opened from; for the factory and for checks of whole files.
#pragma once

#include <memory>
#include <string>

#include "image/image_source.h"

namespace vantrel {

// Each opens a file of its form, and throws CRefused if the file cannot be opened or its header or tables are unusable.
std::unique_ptr<CImageSource> OpenPlainImage(const std::string& path);
std::unique_ptr<CImageSource> OpenCsoImage(const std::string& path);
std::unique_ptr<CImageSource> OpenDaxImage(const std::string& path);
/// For the forms BIN and CUE. Damaged sectors, and those whose data no sector of an image can hold, are unreadable.
std::unique_ptr<CImageSource> OpenRawImage(const std::string& path, EForm form);

}  // namespace vantrel
