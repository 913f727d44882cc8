// Outputs in both manners, and buffered reading.
#include "files/output_file.h"

#include <gtest/gtest.h>

#include "files/input_file.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

TEST(OutputFile, InPlaceKeepsWhatWasWritten) {
    const test::CTestFolder folder;
    {
        COutputFile output;
        ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::InPlace));
        EXPECT_TRUE(output.Write(Bytes{1, 2, 3}));
    }
    EXPECT_EQ(test::ReadWhole(folder / "a.bin"), (Bytes{1, 2, 3}));
}

TEST(OutputFile, TransactionalAppearsOnlyWithCommit) {
    const test::CTestFolder folder;
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::CommitNew));
    EXPECT_TRUE(output.Write(Bytes(600'000, 7)));
    EXPECT_TRUE(output.Seek(1));
    EXPECT_TRUE(output.Write(Bytes{9}));
    EXPECT_EQ(output.Size(), 600'000);
    EXPECT_EQ(FileKindOf(folder / "a.bin"), EFileKind::Missing);
    EXPECT_TRUE(output.Commit());
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.bin"});
    Bytes expected(600'000, 7);
    expected[1] = 9;
    EXPECT_EQ(test::ReadWhole(folder / "a.bin"), expected);
}

TEST(OutputFile, AbandonedLeavesTheOlderFile) {
    const test::CTestFolder folder;
    test::WriteText(folder / "a.bin", "older");
    {
        COutputFile output;
        ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::CommitReplace));
        EXPECT_TRUE(output.Write(Bytes(10, 1)));
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.bin"});
    EXPECT_EQ(test::ReadText(folder / "a.bin"), "older");
}

TEST(OutputFile, CommitNewNeverReplaces) {
    const test::CTestFolder folder;
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::CommitNew));
    test::WriteText(folder / "a.bin", "came meanwhile");
    EXPECT_FALSE(output.Commit());
    EXPECT_NE(output.FailureText().find(folder / "a.bin"), std::string::npos);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.bin"});
    EXPECT_EQ(test::ReadText(folder / "a.bin"), "came meanwhile");
}

TEST(OutputFile, CommitReplaceReplaces) {
    const test::CTestFolder folder;
    test::WriteText(folder / "a.bin", "older");
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::CommitReplace));
    EXPECT_TRUE(output.WriteZeros(5000));
    EXPECT_TRUE(output.Commit());
    EXPECT_EQ(test::ReadWhole(folder / "a.bin"), Bytes(5000, 0));
}

TEST(OutputFile, ZerosReadBackWhereverTheyWereWritten) {
    for (const EOutputManner manner : {EOutputManner::InPlace, EOutputManner::CommitReplace}) {
        for (const std::size_t run : {1U, 2048U, 65'535U, 65'536U, 1'000'000U}) {
            const test::CTestFolder folder;
            COutputFile output;
            ASSERT_TRUE(output.Open(folder / "a.bin", manner));
            Bytes expected;
            const auto write = [&](const Bytes& bytes) {
                EXPECT_TRUE(output.Write(bytes));
                expected.insert(expected.end(), bytes.begin(), bytes.end());
            };
            const auto writeZeros = [&](std::size_t count) {
                EXPECT_TRUE(output.WriteZeros(static_cast<std::int64_t>(count)));
                expected.resize(expected.size() + count);
            };
            writeZeros(run);
            write(test::RandomBytes(100, run));
            writeZeros(run);
            writeZeros(run);
            write(test::RandomBytes(300'000, run));
            writeZeros(run);
            EXPECT_TRUE(output.Seek(50));
            EXPECT_TRUE(output.WriteZeros(1));
            expected[50] = 0;
            EXPECT_TRUE(output.Seek(50));
            EXPECT_TRUE(output.Write(Bytes{9}));
            expected[50] = 9;
            EXPECT_TRUE(output.Seek(output.Size()));
            write(Bytes{1, 2, 3});
            writeZeros(run);
            EXPECT_EQ(output.Size(), static_cast<std::int64_t>(expected.size()));
            EXPECT_TRUE(output.Commit());
            EXPECT_EQ(test::ReadWhole(folder / "a.bin"), expected);
        }
    }
}

TEST(OutputFile, ReopensWithoutEmptying) {
    for (const EOutputManner manner : {EOutputManner::InPlace, EOutputManner::CommitNew}) {
        const test::CTestFolder folder;
        COutputFile output;
        ASSERT_TRUE(output.Open(folder / "a.bin", manner));
        EXPECT_TRUE(output.Write(Bytes{1, 2, 3}));
        ASSERT_TRUE(output.Reopen());
        EXPECT_EQ(output.Size(), 3);
        EXPECT_EQ(output.Position(), 0);
        EXPECT_TRUE(output.Write(Bytes{9}));
        EXPECT_TRUE(output.Commit());
        EXPECT_EQ(test::ReadWhole(folder / "a.bin"), (Bytes{9, 2, 3}));
    }
}

TEST(OutputFile, InPlaceCannotReopenWhatIsGone) {
    const test::CTestFolder folder;
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::InPlace));
    ASSERT_TRUE(RemoveFile(folder / "a.bin"));
    EXPECT_FALSE(output.Reopen());
}

TEST(InputFile, ReadsByPositionAndInOrder) {
    const test::CTestFolder folder;
    const Bytes content = test::RandomBytes(700'000, 1);
    test::WriteWhole(folder / "a.bin", content);
    CInputFile input;
    ASSERT_TRUE(input.Open(folder / "a.bin"));
    EXPECT_EQ(input.Size(), 700'000);
    Bytes piece(1000);
    EXPECT_EQ(input.ReadAt(262'000, piece), 1000U);
    EXPECT_TRUE(std::equal(piece.begin(), piece.end(), content.begin() + 262'000));
    EXPECT_EQ(input.ReadAt(5, piece), 1000U);
    EXPECT_TRUE(std::equal(piece.begin(), piece.end(), content.begin() + 5));
    EXPECT_EQ(input.ReadAt(699'999, piece), 1U);
    EXPECT_EQ(input.Read(piece), 0U);
    EXPECT_FALSE(input.Seek(-1));
    EXPECT_EQ(input.ReadAt(-1, piece), 0U);
    EXPECT_FALSE(input.HasFailed());
}

TEST(InputFile, AFolderIsNoFile) {
    const test::CTestFolder folder;
    CInputFile input;
    EXPECT_FALSE(input.Open(folder.Path()));
}

}  // namespace
}  // namespace vantrel
