// Names of files that exist for a moment beside a target.
#pragma once

#include <string>

namespace vantrel {

/// A path in the folder of `path` that no other file is likely to have.
std::string TemporaryPathBeside(const std::string& path);

/// Removes such a file. Whoever looks into every new file, like a virus scanner, may be in the way; so there is a
/// second try after a moment.
void RemoveTemporary(const std::string& path);

}  // namespace vantrel
