// What the tests of the CSO conversions share: small images of PSP titles and hand-made containers.
#pragma once

#include <string>
#include <vector>

#include "compress/compression_request.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {

/// `bytes` with the mark of a PSP title, lengthened with zeros where they are too short to carry it.
Bytes WithPspMark(Bytes bytes);

/// A conversion of an image of any length: the mark is examined in a second file.
SCompressionRequest RequestFor(const CTestFolder& folder, const Bytes& image);

/// A container put together by hand. Blocks are given as stored.
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

/// A container of the given blocks, compressed, one after the other, aligned to 1 << `align`.
SHandMadeCso CsoOf(const std::vector<Bytes>& blocks, std::uint8_t align);

/// Expands `content` in the window's manner; the output's bytes are in "new-game.iso" of the folder afterwards.
SCompressionRequest ExpansionOf(const CTestFolder& folder, const Bytes& content);

}  // namespace vantrel::test
