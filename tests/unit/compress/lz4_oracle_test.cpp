// LZ4 blocks of Debian's liblz4 are read. It reads ours, too: see lz4_size_test.cpp.
#include <gmock/gmock.h>

#include "compress/lz4_decoder.h"
#include "tests/unit/compress/lz4_reference.h"
#include "tests/unit/compress/lz4_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::SLz4Data;

class Lz4Oracle : public testing::TestWithParam<SLz4Data> {};

TEST_P(Lz4Oracle, ReadsBlocksOfTheReference) {
    test::ForEachLz4Block(GetParam().make(), [](std::span<const std::uint8_t> content) {
        for (const int level : {0, test::kLz4ReferenceLevel, test::kMostLz4ReferenceLevel}) {
            Bytes out(content.size());
            EXPECT_EQ(DecodeLz4(test::ReferenceLz4Block(content, level), out), content.size()) << level;
            EXPECT_EQ(out, Bytes(content.begin(), content.end())) << level;
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Data, Lz4Oracle, testing::ValuesIn(test::Lz4Corpus().begin(), test::Lz4Corpus().end()),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vantrel
