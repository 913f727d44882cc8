// Shared by the tests of raw images.
#pragma once

#include "tests/support/image_builder.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {

/// A small PlayStation 2 CD image, exactly as long as its volume.
inline Bytes CdImage(EPostgap postgap = EPostgap::None) {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/LEVEL1.BIN", RandomBytes(50'000, 2)}};
    description.postgap = postgap;
    return BuildImage(description).bytes;
}

}  // namespace vantrel::test
