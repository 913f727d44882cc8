// What a file is, and which files its image contains.
#pragma once

#include <string>

#include "image/report.h"

namespace vantrel {

/// Members: "file", "form", "file_bytes", and either "layout" (see ReportOnLayout) or "container", for forms that have
/// one, and "image" (see ReportOnContainer, ReportOnImage). Throws CRefused if the file holds neither a layout nor an
/// image, or is damaged where it was read. `filesFolder` is that of a layout.
CReport ReportOnFile(const std::string& path, const std::string& filesFolder = {});

/// Members: "file", "form" and "files", a list with "sector", "bytes" and "path" of every file in the image, in the
/// order of their sectors. Throws CRefused if the file holds no image or is damaged where it was read.
CReport ReportOnContents(const std::string& path);

}  // namespace vantrel
