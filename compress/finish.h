// The end that the conversions of compressed images share.
#pragma once

#include "compress/compression_request.h"
#include "operation/operation.h"

namespace vantrel {

/// Closes or names the output, shows the last texts and completes with `doneText`; the completion shows the length of
/// the output.
void FinishConversion(const SCompressionRequest& request, COutputFile& output, const char* doneText,
                      COperation& operation);

}  // namespace vantrel
