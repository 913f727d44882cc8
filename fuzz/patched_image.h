// Images in the input of a fuzzer: a length and a list of patches over zeros, because images are large and mostly
// zeros.
//
//     16 bits  sectors
//      8 bits  bytes behind the last whole sector
//     then patches: 16 bits sector, 16 bits position in it, 16 bits length, and the bytes
#pragma once

#include <cstdint>
#include <span>

#include "fuzz/memory_disk.h"

namespace vantrel::fuzz {

/// Applies a list of patches.
Bytes PatchedImage(std::span<const std::uint8_t> input);

/// A list of patches that makes an image.
Bytes PatchesOf(std::span<const std::uint8_t> image);

}  // namespace vantrel::fuzz
