// Compares two images byte by byte.
#pragma once

#include <cstdint>

#include "files/byte_source.h"
#include "operation/operation.h"

namespace vantrel {

/// The position of the first byte that differs; the length of the shorter image if that is how the other begins. A
/// damaged block ends an image. Progress is counted in bytes.
std::int64_t FirstDifference(CByteSource& image, CByteSource& other, COperation& operation);

}  // namespace vantrel
