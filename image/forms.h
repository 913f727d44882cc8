// The forms that an image can be opened from; only the factory uses this header.
#pragma once

#include <memory>
#include <string>

#include "image/image_source.h"

namespace vantrel {

// Each opens a file of its form, and throws CRefused if the file cannot be opened or its header or tables are unusable.
std::unique_ptr<CImageSource> OpenPlainImage(const std::string& path);
std::unique_ptr<CImageSource> OpenCsoImage(const std::string& path);
std::unique_ptr<CImageSource> OpenDaxImage(const std::string& path);
std::unique_ptr<CImageSource> OpenBinImage(const std::string& path);

}  // namespace vantrel
