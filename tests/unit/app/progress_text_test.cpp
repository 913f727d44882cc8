// The parts of the progress bar's text. 2026-11-21 is a Saturday, 155,552 days after 1601-01-01.
#include "app/ui/progress_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantrel {
namespace {

constexpr std::int64_t kSaturday = 155'552 * kTicksPerDay;

constexpr std::int64_t Seconds(std::int64_t seconds) {
    return seconds * kTicksPerSecond;
}

constexpr std::int64_t At(std::int64_t day, int hour, int minute, int second) {
    return day + Seconds(hour * 3600 + minute * 60 + second);
}

std::string Times(const SProgress& progress, std::int64_t start, std::int64_t now) {
    return ProgressText(EProgressText::Times, progress, {start, now}, {});
}

TEST(ProgressText, NoModeGivesNoText) {
    EXPECT_EQ(ProgressText(EProgressText::None, {0, 10, 5}, {}, {"a", "b", "c"}), "");
}

TEST(ProgressText, PercentIsRoundedDown) {
    EXPECT_EQ(ProgressText(EProgressText::Percent, {0, 3, 2}, {}, {}), "66%");
    EXPECT_EQ(ProgressText(EProgressText::Percent, {0, 3, 0}, {}, {}), "0%");
    EXPECT_EQ(ProgressText(EProgressText::Percent, {0, 3, 3}, {}, {}), "100%");
    EXPECT_EQ(ProgressText(EProgressText::Percent, {10, 30, 20}, {}, {"<", "copying ", ">"}), "<copying 50%>");
}

TEST(ProgressText, PercentOfTheWidestRange) {
    constexpr std::int32_t top = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t bottom = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(ProgressText(EProgressText::Percent, {0, top, top - 1}, {}, {}), "99%");
    EXPECT_EQ(ProgressText(EProgressText::Percent, {bottom, top, top}, {}, {}), "100%");
    EXPECT_EQ(ProgressText(EProgressText::Percent, {0, 0, 0}, {}, {}), "100%");
}

TEST(ProgressText, TimeLineOfToday) {
    EXPECT_EQ(Times({0, 100, 25}, At(kSaturday, 13, 7, 59), At(kSaturday, 13, 8, 59)),
              "13:07:59 - 00:01:00 - 25% / 75% - 00:03:00 - 13:11:59");
}

TEST(ProgressText, NothingDoneYet) {
    EXPECT_EQ(Times({0, 100, 0}, At(kSaturday, 9, 0, 0), At(kSaturday, 9, 0, 5)),
              "09:00:00 - 00:00:05 - 0% / 100% - 00:00:00 - 09:00:05");
}

TEST(ProgressText, StartOfAnotherDayShowsItsDate) {
    EXPECT_EQ(Times({0, 2, 1}, At(kSaturday - kTicksPerDay, 23, 59, 0), At(kSaturday, 0, 1, 0)),
              "2026/11/20/06 23:59:00 - 00:02:00 - 50% / 50% - 00:02:00 - 00:03:00");
}

TEST(ProgressText, EndOnAnotherDayShowsItsDate) {
    EXPECT_EQ(Times({0, 2, 1}, At(kSaturday, 23, 58, 0), At(kSaturday, 23, 59, 30)),
              "23:58:00 - 00:01:30 - 50% / 50% - 00:01:30 - 2026/11/22/01 00:01:00");
}

TEST(ProgressText, WholeDaysAreCounted) {
    EXPECT_EQ(Times({0, 4, 1}, At(kSaturday, 1, 2, 3), At(kSaturday + 2 * kTicksPerDay, 2, 2, 3)),
              "2026/11/21/07 01:02:03 - 2:01:00:00 - 25% / 75% - 6:03:00:00 - 2026/11/29/01 05:02:03");
}

TEST(ProgressText, RatioIsCalculatedIn256thsOfAPercent) {
    // 1 of 3 is 8533/25600; after 100 s, the estimated total is 300.011... s.
    EXPECT_EQ(Times({0, 3, 1}, At(kSaturday, 0, 0, 0), At(kSaturday, 0, 1, 40)),
              "00:00:00 - 00:01:40 - 33% / 67% - 00:03:20 - 00:05:00");
}

TEST(ProgressText, CaptionPutsTheLineInParentheses) {
    EXPECT_EQ(ProgressText(EProgressText::Times, {0, 2, 1}, {At(kSaturday, 1, 0, 0), At(kSaturday, 1, 0, 1)},
                           {"", "copying", "!"}),
              "copying (01:00:00 - 00:00:01 - 50% / 50% - 00:00:01 - 01:00:02)!");
}

TEST(ProgressText, ClockSetBackDuringTheWork) {
    EXPECT_EQ(Times({0, 2, 1}, At(kSaturday, 10, 0, 0), At(kSaturday, 9, 0, 0)),
              "10:00:00 - 00:00:00 - 50% / 50% - 00:00:00 - 10:00:00");
}

}  // namespace
}  // namespace vantrel
