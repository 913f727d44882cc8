// The CSO container: an image cut into blocks, each a raw deflate stream (RFC 1951) of its own or stored plain, behind
// an index of file positions. ZSO is the same with LZ4 blocks. Conversion in both directions.
#pragma once

#include "compress/compression_request.h"
#include "operation/operation.h"

namespace vantrel {

/// Compresses the image of a PSP title. Ends silently, with nothing written, if no level is selected.
void IsoToCso(const SCompressionRequest& request, COperation& operation);

/// Compresses any image into a CSO or ZSO file. The request must be strict and have a level, which does not count for
/// ZSO.
void ImageToCso(const SCompressionRequest& request, COperation& operation);

/// Expands a CSO file. Ends silently, with nothing written, if no level is selected.
void CsoToIso(const SCompressionRequest& request, COperation& operation);

}  // namespace vantrel
