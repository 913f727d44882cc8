// Reports on an IML layout and the files that it lists.
#pragma once

#include <string>

#include "image/inspect/report.h"

namespace vantrel {

/// Members: "media", "entries", "listed_files", "missing" (paths), "leading_structures", "leading_structures_present".
/// Throws CRefused if the file is not a readable layout.
CReport ReportOnLayout(const std::string& path);

/// Members: "file", "form", "ok", "problems" (texts): whether every listed file exists and fits its sector range, and
/// the leading structures exist. Throws CRefused if the file is not a readable layout.
CReport VerifyLayout(const std::string& path);

}  // namespace vantrel
