// Formatting by printf patterns.
#include "operation/text.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(Format, FormatsAsPrintfDoes) {
    EXPECT_EQ(Format("Code %d - %s%%", 50, "x"), "Code 50 - x%");
    EXPECT_EQ(Format("%-8d|%08X", 7, 0xABCU), "7       |00000ABC");
}

TEST(Format, HasNoLimitOfLength) {
    const std::string text(100'000, 'a');
    EXPECT_EQ(Format("%s.", text.c_str()), text + ".");
    EXPECT_EQ(Format("%s", ""), "");
}

TEST(Format, TextsOfBytesAndPercent) {
    EXPECT_EQ(BytesText(4'294'967'296), "4294967296 bytes");
    EXPECT_EQ(BytesText(-1), "-1 bytes");
    EXPECT_EQ(PercentText(125), "125%");
}

}  // namespace
}  // namespace vantrel
