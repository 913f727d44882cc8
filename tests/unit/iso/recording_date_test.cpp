// Dates of directory records.
#include "iso/recording_date.h"

#include <gtest/gtest.h>

#include <array>

namespace vantrel {
namespace {

using Date = std::array<std::uint8_t, 7>;

TEST(RecordingDate, SecondsSince1970) {
    EXPECT_EQ(SecondsOf(Date{70, 1, 1, 0, 0, 0, 0}), 0);
    EXPECT_EQ(SecondsOf(Date{101, 9, 9, 1, 46, 40, 0}), 1'000'000'000);
    EXPECT_EQ(SecondsOf(Date{101, 9, 9, 10, 46, 40, 36}), 1'000'000'000) << "nine hours east of Greenwich";
    EXPECT_EQ(SecondsOf(Date{101, 9, 8, 17, 46, 40, 0xE0}), 1'000'000'000) << "eight hours west";
    EXPECT_EQ(SecondsOf(Date{100, 2, 29, 0, 0, 0, 0}), 951'782'400) << "a leap day";
}

TEST(RecordingDate, WhatIsNoDate) {
    for (const Date& date : {Date{}, Date{101, 2, 29, 0, 0, 0, 0}, Date{101, 13, 1, 0, 0, 0, 0},
                             Date{101, 1, 1, 24, 0, 0, 0}, Date{101, 1, 1, 0, 60, 0, 0}, Date{101, 1, 1, 0, 0, 60, 0},
                             Date{101, 1, 1, 0, 0, 0, 53}, Date{101, 1, 1, 0, 0, 0, 0xCB}}) {
        EXPECT_EQ(SecondsOf(date), std::nullopt);
    }
}

}  // namespace
}  // namespace vantrel
