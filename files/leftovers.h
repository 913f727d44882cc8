// What a killed process leaves: temporary files where the system keeps them, and folders of outputs that get their
// names together. The next run in that folder removes them, or finishes what was complete. What a living process holds
// is locked and stays.
#pragma once

#include <string>

#include "files/native_file.h"

namespace vantrel {

// The contents of a folder of waiting outputs; see staging.h.
inline constexpr const char* kStagingLock = "lock";
inline constexpr const char* kStagedFolder = "staged";
inline constexpr const char* kCompleteFolder = "new";
inline constexpr const char* kReplacedFile = "old-";
inline constexpr const char* kUndoneFile = "undone-";
inline constexpr const char* kKeptFile = "kept-";

/// Removes such leftovers from a folder, which ends in a separator or is empty. Outputs that were all complete get the
/// names that they have not got yet. Whatever cannot be removed stays.
void RemoveLeftovers(const std::string& folder);

/// Removes a folder of waiting outputs with everything in it, and its lock last; but no kept file. `path` ends in a
/// separator.
void RemoveStaging(const std::string& path, CNativeFile& lock);

}  // namespace vantrel
