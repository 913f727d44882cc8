// Temporary files beside a target.
#pragma once

#include <string>

namespace vantrel {

/// A random path in the folder of `path`, which is unlikely to exist.
std::string TemporaryPathBeside(const std::string& path);

/// Removes such a file. Tries again after 20 ms, because virus scanners open new files.
void RemoveTemporary(const std::string& path);

}  // namespace vantrel
