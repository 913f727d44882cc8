// The images that conversions are run on while their calls fail: as small as they may be and still take every way.
#pragma once

#include "tests/support/image_builder.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {

/// "game.iso" of a PSP title, larger than the buffers of the file layer, so that it takes several reads.
void WriteUmd(const CTestFolder& folder);

/// "game.iso" of a PlayStation 2 CD with two files and a hole that is not empty.
void WriteCd(const CTestFolder& folder);
void WriteCdWithoutPostgap(const CTestFolder& folder);

/// "game.iso" of a PlayStation 2 DVD, the same.
void WriteDvd(const CTestFolder& folder);

}  // namespace vantrel::test
