// What a file is, and which files its image contains.
#pragma once

#include <string>

#include "image/image_source.h"
#include "image/report.h"
#include "iso/contents.h"

namespace vantrel {

/// Members: "file", "form", "file_bytes", and either "layout" (see ReportOnLayout) or "container", for forms that have
/// one, and "image" (see ReportOnContainer, ReportOnImage). Throws CRefused if the file holds neither a layout nor an
/// image, or is damaged where it was read. `filesFolder` is that of a layout.
CReport ReportOnFile(const std::string& path, const std::string& filesFolder = {});

/// The files of an image that was opened from `path`. Throws CRefused if it is damaged where it was read, or does not
/// hold all of its directories.
SContents ContentsOf(CImageSource& image, const std::string& path);

/// Members: "file", "form" and "files", a list with "sector", "bytes" and "path" of every file in the image, in the
/// order of their sectors. Throws CRefused if the file holds no image, and as ContentsOf does.
CReport ReportOnContents(const std::string& path);

}  // namespace vantrel
