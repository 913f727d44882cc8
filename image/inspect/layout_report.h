// Reports on an IML layout and the files that it lists.
#pragma once

#include <string>

#include "image/report.h"

namespace vantrel {

// The layout's relative paths start in `filesFolder`, or in its own folder if that is empty.

/// Members: "media", "entries", "listed_files", "missing" (paths), "leading_structures", "leading_structures_present".
/// Throws CRefused if the file is not a readable layout.
CReport ReportOnLayout(const std::string& path, const std::string& filesFolder = {});

/// Members: "file", "form", "ok", "problems" (texts): whether every listed file exists and fits its sector range, and
/// the leading structures exist. Throws CRefused if the file is not a readable layout.
CReport VerifyLayout(const std::string& path, const std::string& filesFolder = {});

}  // namespace vantrel
