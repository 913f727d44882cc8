// Opening and reading the image that a command was given, or saying why not.
#pragma once

#include <memory>
#include <string>

#include "image/image_source.h"

namespace vantrel {

/// The image in a file of any form; throws CRefused with the file's name and the cause otherwise.
std::unique_ptr<CImageSource> OpenImageOrRefuse(const std::string& path);

/// Throws CRefused when something of the image that was asked for could not be read.
void RefuseDamaged(const CImageSource& image, const std::string& path);

/// Length of a file in bytes; throws CRefused when it cannot be told.
std::int64_t SizeOrRefuse(const std::string& path);

}  // namespace vantrel
