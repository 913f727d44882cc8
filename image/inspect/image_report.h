// Reports on the image in a file: kind, identifiers, lengths, contents.
#pragma once

#include "files/byte_source.h"
#include "image/report.h"

namespace vantrel {

/// Members: "kind", "system_identifier", "volume_identifier", "application_identifier", "bytes", "sectors",
/// "volume_sectors", "postgap", "files", "folders".
CReport ReportOnImage(CByteSource& image);

}  // namespace vantrel
