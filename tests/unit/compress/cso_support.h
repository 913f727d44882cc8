// Shared by the tests of the CSO and DAX conversions: small images of PSP titles, requests, and hand-made CSO files.
#pragma once

#include <string>
#include <vector>

#include "compress/compression_request.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {

/// `bytes` with the mark of a PSP title, extended with zeros if they are too short for it.
Bytes WithPspMark(Bytes bytes);

/// `request` with a level, which is 9 if nothing else is given.
SCompressionRequest WithLevel(SCompressionRequest request, int level = 9);

/// The window's compression of an image of any length into "game" + `extension`: the mark is in a second file.
SCompressionRequest CompressionOf(const CTestFolder& folder, const Bytes& image, const char* extension);

/// A hand-made CSO file. `data` holds the stored blocks.
struct SHandMadeCso {
    std::string magic = "CISO";
    std::uint64_t totalBytes = 0;
    std::uint32_t blockSize = 2048;
    std::uint8_t align = 0;
    std::vector<std::uint32_t> index;
    Bytes data;

    Bytes Encode() const;
};

/// A raw deflate stream of `bytes`.
Bytes RawDeflate(const Bytes& bytes);

/// A CSO file of the given blocks, deflated, in order, aligned to 1 << `align`.
SHandMadeCso CsoOf(const std::vector<Bytes>& blocks, std::uint8_t align);

/// The window's expansion of the CSO file `content` into "new-game.iso".
SCompressionRequest ExpansionOf(const CTestFolder& folder, const Bytes& content);

}  // namespace vantrel::test
