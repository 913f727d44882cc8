// Reports on the image in a file: kind, identifiers, lengths, contents.
#pragma once

#include <string>
#include <vector>

#include "files/byte_source.h"
#include "image/report.h"

namespace vantrel {

/// Members: "kind", "system_identifier", "volume_identifier", "application_identifier", "bytes", "sectors",
/// "volume_sectors", "postgap", "files", "folders".
CReport ReportOnImage(CByteSource& image);

/// Faults of the image as a whole, in words: lengths that disagree, files that reach beyond the image.
std::vector<std::string> ImageProblems(CByteSource& image);

}  // namespace vantrel
