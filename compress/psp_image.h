// The test that both compressors make before they touch anything: is this an image of a PSP title?
#pragma once

#include <string>

#include "compress/compression_request.h"
#include "operation/operation.h"

namespace vantrel {

/// Fails unless the application identifier in the primary volume descriptor of the chosen file (ECMA-119 8.4.20,
/// byte 574 of sector 16) begins with "PSP". A file that cannot be opened is reported under `openCode`, a file of
/// another kind under code 50.
void CheckPspImage(const SCompressionRequest& request, const char* openCode, COperation& operation);

}  // namespace vantrel
