// Names in OSTA compressed Unicode.
#include "iso/udf/osta_name.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

TEST(OstaName, HasEightOrSixteenBitsPerCharacter) {
    EXPECT_EQ(NameOfOsta(Bytes{8, 'A', 0xE9, 1}), "A\xC3\xA9\x01");
    EXPECT_EQ(NameOfOsta(Bytes{16, 0, 'A', 0x65, 0xE5, 0, 10}), "A\xE6\x97\xA5\n");
    EXPECT_EQ(NameOfOsta(Bytes{16, 0xD8, 0x3D, 0xDC, 0xBF}), "\xF0\x9F\x92\xBF");
}

TEST(OstaName, OtherBytesAreNoName) {
    EXPECT_EQ(NameOfOsta({}), std::nullopt);
    EXPECT_EQ(NameOfOsta(Bytes{8}), std::nullopt);
    EXPECT_EQ(NameOfOsta(Bytes{0, 'A'}), std::nullopt);
    EXPECT_EQ(NameOfOsta(Bytes{16, 'A'}), std::nullopt);
    EXPECT_EQ(NameOfOsta(Bytes{254, 'A'}), std::nullopt);
}

}  // namespace
}  // namespace vantrel::test
