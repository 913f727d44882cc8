// What can be said of an IML layout and of the files that it lists.
#pragma once

#include <string>

#include "console/inspect_command.h"

namespace vantrel {

/// Members: "file", "form", "file_bytes", "layout". Throws CRefused when the file is no layout that can be read.
Report ReportOnLayout(const std::string& path);

/// Members: "file", "form", "ok", "problems": every listed file present and no longer than its range, and the leading
/// structures there. Throws CRefused when the file is no layout that can be read.
Report VerifyLayout(const std::string& path);

}  // namespace vantrel
