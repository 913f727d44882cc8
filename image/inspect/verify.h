// Reads whole files: checks everything in them, computes the checksums of their images, and compares images.
#pragma once

#include <string>

#include "image/inspect/dat_file.h"
#include "image/report.h"
#include "operation/operation.h"

namespace vantrel {

struct SVerifyOptions {
    const CDatFile* dat = nullptr;  ///< Where to look the image up; null for nowhere.
    std::string filesFolder;        ///< Where the relative paths of a layout start; empty for its own folder.
};

// Progress is reported in bytes of the image and of the files of a raw one, with a yield for each chunk. Each call
// throws CRefused if a file holds nothing that it can read.

/// Verifies an image or a layout. Members: "file", "form", "ok", "problems" (texts); for a CUE sheet, "tracks" (see
/// ReportOnTracks) with "checked"; for a completely readable image, "image" with "bytes", "crc32", "md5" and "sha1";
/// for a raw file, "bin" with "file" and the same four of the file itself; for a sheet, "bins", a list of these for
/// each file that it names. With a database also "dat" with "file", "status" ("verified" or "unknown") and, if
/// verified, "game" and "name"; an unknown image is a problem.
CReport VerifyFile(const std::string& path, COperation& operation, const SVerifyOptions& options = {});

/// Compares the images in two files. Members: "file", "form", "against", "ok", and "difference", which is null or has
/// "byte" (the first position that differs), "bytes" and "bytes_against".
CReport CompareImages(const std::string& path, const std::string& other, COperation& operation);

}  // namespace vantrel
