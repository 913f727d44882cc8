// A report as text: for people, or as JSON.
#pragma once

#include <string>

#include "image/report.h"

namespace vantrel {

/// "name: value" in a line for each member; members of members are indented below their name.
/// `escape` is for terminals: control characters become "\x1B".
std::string PlainText(const CReport& report, bool escape = false);

/// JSON in one line, with a line break at the end. Bytes that are not UTF-8 become U+FFFD.
std::string JsonText(const CReport& report);

}  // namespace vantrel
