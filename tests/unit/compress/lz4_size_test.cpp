// Debian's liblz4 reads our LZ4 blocks, and makes none that are much smaller. Not under the sanitizers, which take
// minutes for it: lz4_test.cpp encodes the same data.
#include <gmock/gmock.h>

#include <memory>

#include "compress/lz4_encoder.h"
#include "tests/unit/compress/lz4_reference.h"
#include "tests/unit/compress/lz4_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::SLz4Data;

/// Of our block, compared with the reference.
constexpr double kLargestRatio = 1.02;

class Lz4Size : public testing::TestWithParam<SLz4Data> {};

TEST_P(Lz4Size, TheReferenceReadsOurBlocksAndMakesNoneThatAreMuchSmaller) {
    const auto encoder = std::make_unique<CLz4Encoder>();
    test::ForEachLz4Block(GetParam().make(), [&encoder](std::span<const std::uint8_t> content) {
        Bytes block(content.size() + content.size() / 100 + 16);
        block.resize(encoder->Encode(content, block));
        EXPECT_EQ(test::ReferenceDecodedLz4(block, content.size()), Bytes(content.begin(), content.end()));
        const std::size_t reference = test::ReferenceLz4Block(content, test::kLz4ReferenceLevel).size();
        EXPECT_LE(static_cast<double>(block.size()), kLargestRatio * static_cast<double>(reference));
    });
}

INSTANTIATE_TEST_SUITE_P(Data, Lz4Size, testing::ValuesIn(test::Lz4Corpus().begin(), test::Lz4Corpus().end()),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vantrel
