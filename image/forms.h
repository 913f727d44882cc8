// The forms that an image can be opened from; only the factory needs to know them.
#pragma once

#include <memory>
#include <string>

#include "image/image_source.h"

namespace vantrel {

std::unique_ptr<CImageSource> OpenPlainImage(const std::string& path, std::string& problem);
std::unique_ptr<CImageSource> OpenCsoImage(const std::string& path, std::string& problem);
std::unique_ptr<CImageSource> OpenDaxImage(const std::string& path, std::string& problem);
std::unique_ptr<CImageSource> OpenBinImage(const std::string& path, std::string& problem);

}  // namespace vantrel
