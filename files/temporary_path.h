// Temporary files beside a target.
#pragma once

#include <string>
#include <string_view>

namespace vantrel {

/// A random path in a folder, which ends in a separator or is empty. It is unlikely to exist.
std::string TemporaryPathIn(const std::string& folder);

/// Whether a file name is one of these.
bool IsTemporaryName(std::string_view name);

/// Removes such a file, or tries to for 100 ms.
void RemoveTemporary(const std::string& path);

/// Removes a folder whose contents were just moved or removed, or tries to for 100 ms. On failure, returns false with
/// LastFileError() set.
bool RemoveEmptied(const std::string& path);

}  // namespace vantrel
