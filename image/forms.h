// The forms that an image can be opened from. Each has a row in the table of form.cpp.
#pragma once

#include <memory>
#include <string>

#include "image/image_source.h"

namespace vantrel {

/// Opens a file whose form is known. Throws CRefused like OpenImage.
std::unique_ptr<CImageSource> OpenImageAs(EForm form, const std::string& path);

// Each opens a file of its form, and throws CRefused if the file cannot be opened or its header or tables are unusable.
std::unique_ptr<CImageSource> OpenPlainImage(const std::string& path);
std::unique_ptr<CImageSource> OpenCsoImage(const std::string& path);
std::unique_ptr<CImageSource> OpenZsoImage(const std::string& path);
std::unique_ptr<CImageSource> OpenDaxImage(const std::string& path);
// Damaged sectors, and those whose data no sector of an image can hold, are unreadable.
std::unique_ptr<CImageSource> OpenBinImage(const std::string& path);
std::unique_ptr<CImageSource> OpenCueImage(const std::string& path);

}  // namespace vantrel
