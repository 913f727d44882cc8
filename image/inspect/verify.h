// Reading files whole: is everything there and right, what is the image's sum, is it the same as another's?
#pragma once

#include <string>

#include "console/inspect_command.h"

namespace vantrel {

/// Members: "file", "form", "ok", "problems" (texts), and, when the image could be read, "image" with "bytes", "crc32",
/// "md5" and "sha1". Throws CRefused when the file holds no image that can be opened.
Report VerifyImage(const std::string& path);

/// Members: "file", "form", "against", "ok", "difference". Compares the images that two files hold.
Report CompareImages(const std::string& path, const std::string& other);

}  // namespace vantrel
