// The names of the files that belong to a layout. They differ from the layout's own name in the extension.
#pragma once

#include <string>

namespace vantrel {

/// The ".ims" file with the leading structures, as an export names it.
std::string LeadingPathOf(const std::string& layoutPath);

/// The ".gaps" file with the areas that no file covers.
std::string GapPathOf(const std::string& layoutPath);

}  // namespace vantrel
