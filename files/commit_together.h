// Several outputs that are of use only together, like a raw image and its sheet: all of them appear, or none.
#pragma once

#include <span>
#include <string>

#include "files/output_file.h"

namespace vantrel {

/// Commits the outputs in their order. When one cannot be, those before it are undone, older files included, the rest
/// is abandoned, and false is returned with `failureText` saying which output failed and why. Always true in place.
bool CommitTogether(std::span<COutputFile* const> outputs, std::string& failureText);

}  // namespace vantrel
