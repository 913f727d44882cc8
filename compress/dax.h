// The DAX container: an image cut into 8192-byte frames, each a zlib stream (RFC 1950) of its own, behind two tables of
// file positions and lengths. Conversion in both directions.
#pragma once

#include "compress/compression_request.h"
#include "operation/operation.h"

namespace vantrel {

/// Compresses the image of a PSP title. Ends silently, with an empty output, if no level is selected.
void IsoToDax(const SCompressionRequest& request, COperation& operation);

/// Compresses any image into a DAX file. The request must be strict and have a level.
void ImageToDax(const SCompressionRequest& request, COperation& operation);

/// Expands a DAX file, which is `imagePath` of the request. Needs no level.
void DaxToIso(const SCompressionRequest& request, COperation& operation);

}  // namespace vantrel
