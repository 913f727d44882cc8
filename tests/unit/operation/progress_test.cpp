// Percentages, byte counts and the order of calls while units or blocks are counted.
#include "operation/progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/recording_operation.h"

namespace vantrel {
namespace {

using test::CRecordingOperation;
using testing::ElementsAre;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

TEST(Percent, IsWholeAndRoundedDown) {
    EXPECT_EQ(PercentOf(0, 3), 0);
    EXPECT_EQ(PercentOf(1, 3), 33);
    EXPECT_EQ(PercentOf(2, 3), 66);
    EXPECT_EQ(PercentOf(3, 3), 100);
    EXPECT_EQ(PercentOf(4, 3), 133);
}

TEST(Percent, IsExactBeyond32Bits) {
    constexpr std::int64_t kTotal = 100'000'000'000;
    EXPECT_EQ(PercentOf(kTotal - 1, kTotal), 99);
    EXPECT_EQ(PercentOf(kTotal, kTotal), 100);
}

TEST(Percent, IsHundredIfThereIsNothingToDo) {
    EXPECT_EQ(PercentOf(0, 0), 100);
    CRecordingOperation operation;
    ShowPercent(operation, 0, 0);
    EXPECT_THAT(operation.Calls(), ElementsAre("pane PERCENT 100%"));
}

TEST(Progress, ShowsThePercentageBeforeItYields) {
    CRecordingOperation operation;
    CProgress progress(operation, 3);
    progress.Advance();
    progress.Advance(2);
    EXPECT_THAT(operation.Calls(),
                ElementsAre("total 3", "pane PERCENT 33%", "done 1", "yield", "pane PERCENT 100%", "done 3", "yield"));
}

TEST(Progress, ContinuesFromWhatIsDone) {
    CRecordingOperation operation;
    CProgress progress(operation, 4, 2);
    progress.Advance();
    EXPECT_THAT(operation.Calls(), ElementsAre("total 4", "pane PERCENT 75%", "done 3", "yield"));
}

TEST(Progress, NeverReportsMoreUnitsThanTheTotal) {
    CRecordingOperation operation;
    CProgress progress(operation, 2);
    progress.Advance(3);
    progress.AdvanceWithBytes(2048);
    EXPECT_EQ(operation.CallsOf("done"), (Lines{"done 2", "done 2"}));
    EXPECT_EQ(operation.CallsOf("pane PERCENT"), (Lines{"pane PERCENT 150%", "pane PERCENT 200%"}));
    EXPECT_EQ(operation.PaneText(EPane::Bytes), "8192 bytes");
}

TEST(Progress, FinishReportsTheTotalAndNothingElse) {
    CRecordingOperation operation;
    CProgress progress(operation, 7);
    progress.Finish();
    EXPECT_THAT(operation.Calls(), ElementsAre("total 7", "done 7"));
}

TEST(Progress, OfNoUnitsIsComplete) {
    CRecordingOperation operation;
    CProgress progress(operation, 0);
    progress.Advance(0);
    progress.Finish();
    EXPECT_THAT(operation.Calls(), ElementsAre("total 0", "pane PERCENT 100%", "done 0", "yield", "done 0"));
}

TEST(Progress, ShowsTheBytesOfAllUnits) {
    CRecordingOperation operation;
    CProgress progress(operation, 3);
    progress.AdvanceWithBytes(2048);
    progress.AdvanceWithBytes(2048);
    EXPECT_THAT(operation.Calls(),
                ElementsAre("total 3", "pane PERCENT 33%", "done 1", "pane BYTES 2048 bytes", "yield",
                            "pane PERCENT 66%", "done 2", "pane BYTES 4096 bytes", "yield"));
}

/// The text of the byte pane when `units` units of 2048 bytes are done.
std::string BytesTextAfter(std::int64_t units) {
    CRecordingOperation operation;
    CProgress progress(operation, 4'194'304, units - 1);
    progress.AdvanceWithBytes(2048);
    return operation.PaneText(EPane::Bytes);
}

TEST(Progress, BytesWrapAfter31Bits) {
    EXPECT_EQ(BytesTextAfter(1'048'575), "2147481600 bytes");
    EXPECT_EQ(BytesTextAfter(1'048'576), "-2147483648 bytes");
    EXPECT_EQ(BytesTextAfter(1'048'577), "-2147481600 bytes");
    EXPECT_EQ(BytesTextAfter(2'097'152), "0 bytes");
    EXPECT_EQ(BytesTextAfter(2'097'153), "2048 bytes");
}

/// Every call for a run over all blocks.
CRecordingOperation ShownFor(std::int64_t blocks, CBlockProgress::EFirst first) {
    CRecordingOperation operation;
    CBlockProgress progress(operation, blocks, first);
    for (std::int64_t block = 0; block < blocks; ++block) {
        progress.ShowIfDue(block);
    }
    return operation;
}

TEST(BlockProgress, ShowsEveryBlockOfFewerThanAHundred) {
    for (const auto first : {CBlockProgress::EFirst::AtBlock0, CBlockProgress::EFirst::AfterAHundredth}) {
        const CRecordingOperation operation = ShownFor(99, first);
        EXPECT_EQ(operation.CallsOf("yield").size(), 99U);
        EXPECT_EQ(operation.CallsOf("pane PERCENT").front(), "pane PERCENT 0%");
        EXPECT_EQ(operation.CallsOf("pane PERCENT").at(50), "pane PERCENT 50%");
        EXPECT_EQ(operation.CallsOf("pane PERCENT").back(), "pane PERCENT 98%");
        EXPECT_EQ(operation.CallsOf("pane BYTES").back(), "pane BYTES 98 block");
    }
}

TEST(BlockProgress, ShowsEveryBlockOfAHundred) {
    for (const auto first : {CBlockProgress::EFirst::AtBlock0, CBlockProgress::EFirst::AfterAHundredth}) {
        const CRecordingOperation operation = ShownFor(100, first);
        EXPECT_EQ(operation.CallsOf("yield").size(), 100U);
        EXPECT_EQ(operation.CallsOf("pane PERCENT").front(), "pane PERCENT 0%");
        EXPECT_EQ(operation.CallsOf("pane PERCENT").back(), "pane PERCENT 99%");
    }
}

TEST(BlockProgress, ShowsEveryHundredthFromBlock0) {
    const CRecordingOperation operation = ShownFor(250, CBlockProgress::EFirst::AtBlock0);
    const Lines calls = operation.Calls();
    ASSERT_EQ(calls.size(), 3U * 125);
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + 6), (Lines{"pane PERCENT 0%", "pane BYTES 0 block", "yield",
                                                              "pane PERCENT 1%", "pane BYTES 2 block", "yield"}));
    EXPECT_EQ(operation.CallsOf("pane PERCENT").back(), "pane PERCENT 124%");
    EXPECT_EQ(operation.CallsOf("pane BYTES").back(), "pane BYTES 248 block");
}

TEST(BlockProgress, ShowsEveryHundredthAfterTheFirst) {
    const CRecordingOperation operation = ShownFor(250, CBlockProgress::EFirst::AfterAHundredth);
    EXPECT_EQ(operation.CallsOf("yield").size(), 125U);
    EXPECT_EQ(operation.CallsOf("pane BYTES").front(), "pane BYTES 1 block");
    EXPECT_EQ(operation.CallsOf("pane PERCENT").front(), "pane PERCENT 0%");
    EXPECT_EQ(operation.CallsOf("pane PERCENT").back(), "pane PERCENT 124%");
    EXPECT_EQ(operation.CallsOf("pane BYTES").back(), "pane BYTES 249 block");
}

TEST(BlockProgress, LastPercentageMayExceedAHundred) {
    CRecordingOperation operation;
    CBlockProgress progress(operation, 250, CBlockProgress::EFirst::AtBlock0);
    progress.Show(250);
    EXPECT_THAT(operation.Calls(), ElementsAre("pane PERCENT 125%", "pane BYTES 250 block"));
}

TEST(BlockProgress, OfNoBlocksIsComplete) {
    CRecordingOperation operation;
    CBlockProgress progress(operation, 0, CBlockProgress::EFirst::AtBlock0);
    EXPECT_THAT(operation.Calls(), IsEmpty());
    progress.Show(0);
    EXPECT_THAT(operation.Calls(), ElementsAre("pane PERCENT 100%", "pane BYTES 0 block"));
}

TEST(BlockProgress, BlockNumberWrapsAfter31Bits) {
    CRecordingOperation operation;
    CBlockProgress progress(operation, 3'000'000'000, CBlockProgress::EFirst::AtBlock0);
    progress.Show(2'147'483'648);
    EXPECT_EQ(operation.PaneText(EPane::Bytes), "-2147483648 block");
}

}  // namespace
}  // namespace vantrel
