// The working folder as the folder of the sounds, whose path is made by formatting with the folder as the pattern.
#pragma once

#include <string>
#include <string_view>

namespace vantrel {

/// Expands `folder` like a printf pattern without arguments: "%%" becomes "%", a conversion such as "%5d" expands to
/// nothing, and a '%' that starts no conversion is dropped.
std::string ExpandAsPattern(std::string_view folder);

}  // namespace vantrel
