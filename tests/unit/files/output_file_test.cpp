// Outputs in both manners, and buffered reading.
#include "files/output_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <random>

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

TEST(OutputFile, TransactionalAppearsOnlyAfterCommit) {
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

TEST(OutputFile, AbandonedKeepsTheOlderFile) {
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
    test::WriteText(folder / "a.bin", "appeared meanwhile");
    EXPECT_FALSE(output.Commit());
    EXPECT_NE(output.Problem().find(folder / "a.bin"), std::string::npos);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.bin"});
    EXPECT_EQ(test::ReadText(folder / "a.bin"), "appeared meanwhile");
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

TEST(OutputFile, ZerosReadBackAtAnyPosition) {
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

TEST(OutputFile, IsReadAtItsPathWhenItIsFinished) {
    for (const EOutputManner manner : {EOutputManner::InPlace, EOutputManner::CommitNew}) {
        const test::CTestFolder folder;
        COutputFile output;
        ASSERT_TRUE(output.Open(folder / "a.bin", manner));
        EXPECT_TRUE(output.Write(Bytes{1, 2, 3}));
        ASSERT_TRUE(output.Finish());
        EXPECT_EQ(test::ReadWhole(output.PathToRead()), (Bytes{1, 2, 3}));
        EXPECT_EQ(output.PathToRead() == folder / "a.bin", manner == EOutputManner::InPlace);
    }
}

TEST(OutputFile, OnlyAnOutputInPlaceIsLeftOpen) {
    for (const EOutputManner manner : {EOutputManner::InPlace, EOutputManner::CommitNew}) {
        const test::CTestFolder folder;
        {
            COutputFile output;
            ASSERT_TRUE(output.Open(folder / "a.bin", manner));
            EXPECT_TRUE(output.Write(Bytes{1, 2, 3}));
            output.LeaveOpen();
        }
        const std::vector<std::string> inPlace = {"a.bin"};
        EXPECT_EQ(folder.Names(), manner == EOutputManner::InPlace ? inPlace : std::vector<std::string>());
    }
}

TEST(OutputFile, ReopensWithoutTruncating) {
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

TEST(OutputFile, InPlaceFailsToReopenARemovedFile) {
    const test::CTestFolder folder;
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::InPlace));
    ASSERT_TRUE(RemoveFile(folder / "a.bin"));
    EXPECT_FALSE(output.Reopen());
}

/// A source without a file.
class CMemorySource : public CByteSource {
public:
    explicit CMemorySource(Bytes bytes) : m_bytes(std::move(bytes)) {}
    std::int64_t Size() const override { return static_cast<std::int64_t>(m_bytes.size()); }
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override {
        const std::size_t start = std::min(static_cast<std::size_t>(position), m_bytes.size());
        const std::size_t count = std::min(buffer.size(), m_bytes.size() - start);
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(start), count, buffer.begin());
        return count;
    }

private:
    Bytes m_bytes;
};

TEST(OutputFile, CopiesCombineWithWritesAndZeros) {
    const Bytes content = test::RandomBytes(900'000, 1);
    for (const EOutputManner manner : {EOutputManner::InPlace, EOutputManner::CommitNew}) {
        for (const bool fromFile : {false, true}) {
            for (const std::size_t length : {0U, 1U, 2048U, 65'535U, 65'536U, 800'000U}) {
                const test::CTestFolder folder;
                test::WriteWhole(folder / "source", content);
                CInputFile file;
                ASSERT_TRUE(file.Open(folder / "source"));
                CMemorySource memory(content);
                CByteSource& source = fromFile ? static_cast<CByteSource&>(file) : memory;
                COutputFile output;
                ASSERT_TRUE(output.Open(folder / "a.bin", manner));
                Bytes buffer(length);
                Bytes expected(3, 7);
                const auto expect = [&](std::size_t position) {
                    EXPECT_EQ(output.Copy(source, static_cast<std::int64_t>(position), buffer), length);
                    const auto begin = content.begin() + static_cast<std::ptrdiff_t>(position);
                    expected.insert(expected.end(), begin, begin + static_cast<std::ptrdiff_t>(length));
                };
                EXPECT_TRUE(output.Write(Bytes(3, 7)));
                expect(5);
                EXPECT_TRUE(output.WriteZeros(70'000));
                expected.resize(expected.size() + 70'000);
                expect(99'000);
                expect(0);
                EXPECT_TRUE(output.Write(Bytes(2, 8)));
                expected.resize(expected.size() + 2, 8);
                EXPECT_EQ(output.Size(), static_cast<std::int64_t>(expected.size()));
                EXPECT_TRUE(output.Commit());
                EXPECT_FALSE(output.HasFailed());
                EXPECT_EQ(test::ReadWhole(folder / "a.bin"), expected) << length;
                Bytes piece(10);
                EXPECT_EQ(file.ReadAt(40, piece), 10U) << "reading works after a copy";
                EXPECT_TRUE(std::equal(piece.begin(), piece.end(), content.begin() + 40));
            }
        }
    }
}

TEST(OutputFile, CopyEndsAtTheEndOfItsSource) {
    const test::CTestFolder folder;
    const Bytes content = test::RandomBytes(100'000, 1);
    test::WriteWhole(folder / "source", content);
    CInputFile source;
    ASSERT_TRUE(source.Open(folder / "source"));
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "a.bin", EOutputManner::CommitNew));
    Bytes buffer(90'000);
    EXPECT_EQ(output.Copy(source, 40'000, buffer), 60'000U);
    EXPECT_EQ(output.Copy(source, 100'000, buffer), 0U);
    EXPECT_EQ(output.Copy(source, -1, buffer), 0U);
    EXPECT_TRUE(output.Commit());
    EXPECT_EQ(test::ReadWhole(folder / "a.bin"), Bytes(content.begin() + 40'000, content.end()));
}

#ifdef __linux__
TEST(OutputFile, CopyToAFullDiskIsAFailedWrite) {
    const test::CTestFolder folder;
    test::WriteWhole(folder / "source", Bytes(200'000, 1));
    CInputFile source;
    ASSERT_TRUE(source.Open(folder / "source"));
    CNativeFile full;
    ASSERT_TRUE(full.Open("/dev/full", EOpenMode::ReadWrite, ESharing::Anyone));
    EXPECT_EQ(source.CopyTo(full, 0, 200'000), 0U);
    COutputFile output;
    ASSERT_TRUE(output.Open("/dev/full", EOutputManner::InPlace));
    Bytes buffer(200'000);
    EXPECT_EQ(output.Copy(source, 0, buffer), 200'000U) << "the source supplied everything";
    EXPECT_TRUE(output.HasFailed());
    EXPECT_NE(output.Problem().find("/dev/full"), std::string::npos);
}
#endif

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

TEST(InputFile, BufferedAndDirectReadsAreEqual) {
    const test::CTestFolder folder;
    const Bytes content = test::RandomBytes(700'000, 1);
    test::WriteWhole(folder / "a.bin", content);
    CInputFile input;
    ASSERT_TRUE(input.Open(folder / "a.bin"));
    std::mt19937 random(1);
    std::size_t position = 0;
    for (int i = 0; i < 2000; ++i) {
        static constexpr std::size_t kLengths[] = {1, 2048, 16'383, 16'384, 65'536, 300'000};
        if (random() % 3 == 0) {
            position = random() % content.size();
            ASSERT_TRUE(input.Seek(static_cast<std::int64_t>(position)));
        }
        Bytes piece(kLengths[random() % std::size(kLengths)]);
        const std::size_t wanted = std::min(piece.size(), content.size() - position);
        ASSERT_EQ(input.Read(piece), wanted);
        ASSERT_TRUE(std::equal(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(wanted),
                               content.begin() + static_cast<std::ptrdiff_t>(position)));
        position += wanted;
    }
    EXPECT_FALSE(input.HasFailed());
}

TEST(InputFile, RefusesAFolder) {
    const test::CTestFolder folder;
    CInputFile input;
    EXPECT_FALSE(input.Open(folder.Path()));
}

#ifndef _WIN32

TEST(OutputFile, ALinkThatLeadsNowhereIsReplaced) {
    const test::CTestFolder folder;
    std::filesystem::create_symlink("none", folder / "link");
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "link", EOutputManner::CommitReplace));
    output.Write(std::array<std::uint8_t, 3>{'n', 'e', 'w'});
    ASSERT_TRUE(output.Commit()) << output.Problem();
    EXPECT_EQ(test::ReadText(folder / "link"), "new");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"link"});
}

TEST(OutputFile, ReplacingKeepsThePermissionsAndTheLink) {
    const test::CTestFolder folder;
    test::WriteText(folder / "real", "older");
    std::filesystem::permissions(folder / "real", std::filesystem::perms{0640});
    std::filesystem::create_symlink("real", folder / "link");
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "link", EOutputManner::CommitReplace));
    output.Write(std::array<std::uint8_t, 3>{'n', 'e', 'w'});
    ASSERT_TRUE(output.Commit()) << output.Problem();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(test::ReadText(folder / "real"), "new");
    EXPECT_EQ(std::filesystem::status(folder / "real").permissions(), std::filesystem::perms{0640});
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"link", "real"}));
}

#endif

}  // namespace
}  // namespace vantrel
