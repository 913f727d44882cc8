// Dates and times of layouts.
#include "iml/export/local_time.h"

#include <gtest/gtest.h>

namespace vantrel::test {
namespace {

TEST(LocalTimeTest, DatesHaveTwoForms) {
    const SLocalTime time = {2004, 3, 9, 0, 0, 0};
    EXPECT_EQ(DateText(time), "2004/03/09");
    EXPECT_EQ(PlainDateText(time), "20040309");
}

TEST(LocalTimeTest, TheHourIsOneOfTwelve) {
    const auto at = [](int hour) { return TimeText({2004, 3, 9, hour, 4, 5}); };
    EXPECT_EQ(at(0), "12:04:05");
    EXPECT_EQ(at(1), "01:04:05");
    EXPECT_EQ(at(11), "11:04:05");
    EXPECT_EQ(at(12), "12:04:05");
    EXPECT_EQ(at(13), "01:04:05");
    EXPECT_EQ(at(23), "11:04:05");
}

TEST(LocalTimeTest, NowIsADate) {
    const SLocalTime now = LocalTimeNow();
    EXPECT_GT(now.year, 2020);
    EXPECT_GE(now.month, 1);
    EXPECT_LE(now.month, 12);
    EXPECT_LE(now.hour, 23);
}

}  // namespace
}  // namespace vantrel::test
