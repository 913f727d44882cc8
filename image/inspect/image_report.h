// What can be said of the image in a file: kind, identifiers, lengths, contents.
#pragma once

#include "console/inspect_command.h"
#include "files/byte_source.h"

namespace vantrel {

/// Members: "kind", "system_identifier", "volume_identifier", "application_identifier", "bytes", "sectors",
/// "volume_sectors", "postgap", "files", "folders".
Report ReportOnImage(CByteSource& image);

/// Faults of an image as a whole, in words: lengths that disagree, files that lie outside.
std::vector<std::string> ImageProblems(CByteSource& image);

}  // namespace vantrel
