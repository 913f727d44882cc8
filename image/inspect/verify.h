// Reads whole files: checks everything in them, computes the checksums of their images, and compares images.
#pragma once

#include <string>

#include "image/inspect/report.h"
#include "operation/operation.h"

namespace vantrel {

// Progress is reported in bytes of the image and of the files of a raw one, with a yield for each chunk. Each call
// throws CRefused if a file holds nothing that it can read.

/// Verifies an image or a layout. Members: "file", "form", "ok", "problems" (texts); for a CUE sheet, "tracks" (see
/// ReportOnTracks) with "checked"; for a completely readable image, "image" with "bytes", "crc32", "md5" and "sha1";
/// for a raw file, "bin" with "file" and the same four of the file itself; for a sheet, "bins", a list of these for
/// each file that it names.
CReport VerifyFile(const std::string& path, COperation& operation);

/// Compares the images in two files. Members: "file", "form", "against", "ok", and "difference", which is null or has
/// "byte" (the first position that differs), "bytes" and "bytes_against".
CReport CompareImages(const std::string& path, const std::string& other, COperation& operation);

}  // namespace vantrel
