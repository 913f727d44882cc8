// Checks the lines of a layout that may have been edited by hand. The rebuild reads fixed columns and a count; this
// check says which line does not fit them.
#pragma once

#include <string>

#include "files/byte_source.h"

namespace vantrel {

/// What is wrong with the first line that does not fit, like "line 31: text behind the closing quote"; empty if all
/// lines up to the end of the list fit, and for a file that neither starts like a layout nor names a medium.
std::string LayoutProblem(CByteSource& layout);

}  // namespace vantrel
