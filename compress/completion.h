// The end that all conversions of compressed images share.
#pragma once

#include <functional>

#include "compress/compression_request.h"
#include "files/checked_file.h"
#include "operation/operation.h"

namespace vantrel {

/// Lets the request's check see the complete output, if it has one, and commits it. Fails if either fails.
void CheckAndCommit(const SCompressionRequest& request, CCheckedOutput& output);

/// Shows the last texts, reports all `units` as done and completes with the request's text, or else `windowText`. The
/// completion calls `closeFiles` and shows the length of the output. Returns false, without calling `closeFiles`, if
/// the runner leaves the completion early.
bool CompleteConversion(
    const SCompressionRequest& request, const COutputFile& output, std::int64_t units, const char* windowText,
    COperation& operation, const std::function<void()>& closeFiles = [] {});

}  // namespace vantrel
