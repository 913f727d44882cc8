// Images for fault injection: as small as possible, but large enough for every code path.
#pragma once

#include "tests/support/image_builder.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {

/// Writes "game.iso" of a PSP title, which is larger than the buffers of the file layer.
void WriteUmd(const CTestFolder& folder);

/// Writes "game.iso" of a PlayStation 2 CD with two files and a hole that is not zeros.
void WriteCd(const CTestFolder& folder);
void WriteCdWithoutPostgap(const CTestFolder& folder);

/// Writes "game.iso" of a PlayStation 2 DVD with the same files.
void WriteDvd(const CTestFolder& folder);

}  // namespace vantrel::test
