// The check that both compressors make before they touch anything: is this an image of a PSP title?
#pragma once

#include "compress/compression_request.h"
#include "operation/operation.h"

namespace vantrel {

/// Fails unless the application identifier in the primary volume descriptor of the chosen file (ECMA-119 8.4.20) begins
/// with "PSP". `openPattern` is the text for a file that cannot be opened; its "%s" stands for the path. A strict
/// conversion also gives a notice if the image is shorter than its volume.
void CheckPspImage(const SCompressionRequest& request, const char* openPattern, COperation& operation);

}  // namespace vantrel
