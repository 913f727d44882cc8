// Checksums of descriptor tags, compared with published values and with those of the builder.
#include "iso/udf/tag.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/udf_builder.h"

namespace vantrel::test {
namespace {

TEST(UdfTag, TheCrcHasItsPublishedCheckValues) {
    const Bytes digits = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(DescriptorCrc(digits), 0x31C3);
    EXPECT_EQ(DescriptorCrc(Bytes{0x70, 0x6A, 0x77}), 0x3299);  // the example of ECMA-167
    EXPECT_EQ(DescriptorCrc({}), 0);
}

class UdfTagTest : public testing::Test {
protected:
    UdfTagTest() { WriteUdfTag(m_bytes, 0, 261, 200, 77); }

    Bytes m_bytes = RandomBytes(2048, 1);
};

TEST_F(UdfTagTest, AcceptsWhatTheBuilderWrote) {
    EXPECT_EQ(TagIdentifier(m_bytes), 261);
    EXPECT_EQ(TagProblem(m_bytes, 261, 77), "");
    Bytes sealed = m_bytes;
    sealed[4] = sealed[8] = sealed[9] = sealed[10] = sealed[12] = 0;
    SealTag(std::span(sealed).first(200), 77);
    EXPECT_EQ(sealed, m_bytes);
}

TEST_F(UdfTagTest, NamesWhatIsWrong) {
    EXPECT_EQ(TagProblem(m_bytes, 266, 77), "no descriptor with tag 266 is there");
    EXPECT_EQ(TagProblem(m_bytes, 261, 78), "the descriptor's tag says location 77 instead of 78");
    EXPECT_EQ(TagProblem(std::span(m_bytes).first(199), 261, 77), "the descriptor's CRC is wrong");
    EXPECT_EQ(TagProblem(std::span(m_bytes).first(15), 261, 77), "no descriptor with tag 261 is there");
    EXPECT_EQ(TagProblem({}, 261, 77), "no descriptor with tag 261 is there");
    for (std::size_t at = 2; at < 200; ++at) {
        Bytes damaged = m_bytes;
        damaged[at] ^= 0x10U;
        EXPECT_EQ(TagProblem(damaged, 261, 77),
                  at < 16 ? "the checksum of the descriptor's tag is wrong" : "the descriptor's CRC is wrong");
    }
}

}  // namespace
}  // namespace vantrel::test
