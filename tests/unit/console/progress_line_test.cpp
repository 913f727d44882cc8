// The texts of the progress line.
#include "console/progress_line.h"

#include <gtest/gtest.h>

#include "console/characters.h"

namespace vantrel {
namespace {

TEST(ProgressLine, Sizes) {
    EXPECT_EQ(SizeText(0), "0 bytes");
    EXPECT_EQ(SizeText(999), "999 bytes");
    EXPECT_EQ(SizeText(1000), "1.00 kB");
    EXPECT_EQ(SizeText(12'345), "12.3 kB");
    EXPECT_EQ(SizeText(999'600), "1.00 MB");
    EXPECT_EQ(SizeText(123'456'789), "123 MB");
    EXPECT_EQ(SizeText(4.7e9), "4.70 GB");
}

TEST(ProgressLine, PercentBytesRateAndRemainingTime) {
    EXPECT_EQ(ProgressText("game.iso", {0.25, 40'000'000, 2.0}, 79), "game.iso   25%  10.0 MB  5.00 MB/s  0:06 left");
    EXPECT_EQ(ProgressText("game.iso", {0.5, 40'000'000, 4000}, 79),
              "game.iso   50%  20.0 MB  5.00 kB/s  1:06:40 left");
    EXPECT_EQ(ProgressText("game.iso", {0.0, 40'000'000, 2.0}, 79), "game.iso    0%  0 bytes")
        << "no rate without progress";
    EXPECT_EQ(ProgressText("game.iso", {1.0, 1000, 0.1}, 79), "game.iso  100%  1.00 kB") << "too early for a rate";
}

TEST(ProgressLine, NothingToDoIsDone) {
    EXPECT_EQ(FractionOf(1, 4), 0.25);
    EXPECT_EQ(FractionOf(4, 4), 1.0);
    EXPECT_EQ(FractionOf(0, 0), 1.0);
}

TEST(ProgressLine, FitsAnyTerminal) {
    const SProgressState state = {0.25, 40'000'000, 2.0};
    for (const std::string& name : {std::string("game.iso"), std::string(100, 'x') + ".iso", std::string("a"),
                                    std::string("\u30b2\u30fc\u30e0\u30b2\u30fc\u30e0\u30b2\u30fc\u30e0.iso"),
                                    std::string("cafe\u0301 cafe\u0301 cafe\u0301 cafe\u0301.iso")}) {
        for (int columns = 19; columns < 150; ++columns) {
            const std::string text = ProgressText(name, state, columns);
            EXPECT_LE(ColumnsOf(text), columns) << text;
            EXPECT_NE(text.find(" 25%"), std::string::npos) << text;
        }
    }
    EXPECT_EQ(ProgressText("a long name of an image.iso", state, 19), "a long nam...   25%");
    EXPECT_EQ(ProgressText("a long name of an image.iso", state, 40), "a long name...   25%  10.0 MB  5.00 MB/s");
    EXPECT_EQ(ProgressText("\u30b2\u30fc\u30e0\u30b2\u30fc\u30e0\u30b2\u30fc\u30e0", state, 19),
              "\u30b2\u30fc\u30e0\u30b2\u30fc...   25%");
}

}  // namespace
}  // namespace vantrel
