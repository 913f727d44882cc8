// Makes CSO containers without the converter's code, for comparison with its outputs.
#pragma once

#include "tests/support/test_folder.h"

namespace vantrel::test {

/// The container of an image at a compression level (1 to 9).
Bytes CsoByHand(const Bytes& image, int level);

/// A UMD image of about `bytes` bytes with blocks that compress well, badly and not at all.
Bytes UmdImage(std::size_t size);

}  // namespace vantrel::test
