// Reads a whole image: checks every block and computes the checksums.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "image/image_chunks.h"
#include "image/inspect/dat_file.h"

namespace vantrel {

/// What reading a whole image has found out.
struct SReading {
    std::vector<std::string> problems;
    std::optional<SSums> sums;  ///< Nullopt if parts of the image are unreadable.
};

/// Reads all chunks on two threads. Calls `afterChunk` on the caller's with the number of bytes so far; it may throw to
/// stop. `blockNoun` names a block in problems.
SReading ReadWhole(CImageChunks& chunks, const char* blockNoun, const std::function<void(std::int64_t)>& afterChunk);

}  // namespace vantrel
