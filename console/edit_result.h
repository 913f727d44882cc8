// What the commands that edit images print.
#pragma once

#include <string>

#include "iso/edit/edit_report.h"

namespace vantrel {

/// One object in a line: the input, the output, and what the report says. `output` is empty if nothing was written.
std::string EditJson(const std::string& input, const std::string& output, const SEditReport& report);

/// The object for an input that was not edited.
std::string FailureJson(const std::string& input, const std::string& text);

}  // namespace vantrel
