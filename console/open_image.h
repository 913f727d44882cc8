// Opening the image that a command was given, or saying why not.
#pragma once

#include <memory>
#include <string>

#include "image/image_source.h"

namespace vantrel {

/// The image in a file of any form; throws CRefused with the file's name and the cause otherwise.
std::unique_ptr<CImageSource> OpenImageOrRefuse(const std::string& path);

}  // namespace vantrel
