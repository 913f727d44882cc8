// The end that all conversions of compressed images share.
#pragma once

#include <functional>

#include "compress/compression_request.h"
#include "operation/operation.h"

namespace vantrel {

/// Shows the last texts, reports all `units` as done and completes with `doneText`. The completion calls `closeFiles`
/// and shows the length of the output. Returns false, without calling `closeFiles`, if the runner leaves the completion
/// early.
bool CompleteConversion(
    const SCompressionRequest& request, const COutputFile& output, std::int64_t units, const char* doneText,
    COperation& operation, const std::function<void()>& closeFiles = [] {});

}  // namespace vantrel
