// iso2cso: order of calls, texts, bytes of the CSO file, refusals.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "compress/cso.h"
#include "tests/support/file_size_limit.h"
#include "tests/support/memory_source.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/compress/cso_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;
using testing::ElementsAre;

Bytes Join(const Bytes& first, const Bytes& second) {
    Bytes both = first;
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

SCompressionRequest WindowRequest(const std::string& folder, const std::string& fileName) {
    return test::WithLevel(WindowCompression(folder, fileName, ".cso"));
}

TEST(IsoToCso, MakesItsCallsInOrder) {
    const CTestFolder folder;
    const SCompressionRequest request = test::CompressionOf(folder, Bytes(2 * 2048, 0), ".cso");
    CRecordingOperation operation;
    IsoToCso(request, operation);
    const std::string output = folder / "game.cso";
    const std::string size = std::to_string(test::ReadWhole(output).size());
    EXPECT_THAT(operation.Calls(),
                ElementsAre("pane STATUS Compression ISO2CSO, please Wait", "begin iso2cso", "pane BYTES 2 Frames",
                            "pane FILE game.cso", "total 2",                                       //
                            "pane PERCENT 0%", "pane BYTES 0 block", "yield", "done 1", "yield",   //
                            "pane PERCENT 50%", "pane BYTES 1 block", "yield", "done 2", "yield",  //
                            "pane PERCENT 100%", "pane BYTES 2 block",                             //
                            "done 2", "pane FILE " + output,                                       //
                            "pane PERCENT 100%", "pane STATUS Compression iso2cso Done !",         //
                            "complete Compression iso2cso Done !", "pane BYTES " + size + " bytes", "completed"));
}

TEST(IsoToCso, WritesHeaderAndIndex) {
    const CTestFolder folder;
    const Bytes noise = test::RandomBytes(2048, 5);
    const SCompressionRequest request =
        test::CompressionOf(folder, Join(Bytes(2048, 0), Join(noise, Bytes(100, 1))), ".cso");
    CRecordingOperation operation;
    IsoToCso(request, operation);
    const Bytes cso = test::ReadWhole(folder / "game.cso");
    EXPECT_EQ(std::string(cso.begin(), cso.begin() + 4), "CISO");
    EXPECT_EQ(test::Read32(cso, 4), 0U);
    EXPECT_EQ(test::Read64(cso, 8), 2U * 2048U + 100U);
    EXPECT_EQ(test::Read32(cso, 16), 2048U);
    EXPECT_EQ(test::Read32(cso, 20), 1U);
    EXPECT_EQ(test::Read32(cso, 24), 36U);
    const std::uint32_t second = test::Read32(cso, 28);
    EXPECT_EQ(second & 0x80000000U, 0x80000000U);
    const std::uint32_t start = second & 0x7FFFFFFFU;
    EXPECT_LT(start - 36, 30U) << "a block of zeros takes a few bytes";
    EXPECT_EQ(test::Read32(cso, 32), start + 2048U);
    EXPECT_EQ(cso.size(), start + 2048U) << "the partial last block is not stored";
    EXPECT_TRUE(std::equal(noise.begin(), noise.end(), cso.begin() + start));
}

/// A block of random bytes, then zeros, whose raw deflate stream has 2048 bytes.
Bytes BlockThatDeflatesToItsSize() {
    for (std::uint64_t seed = 0;; ++seed) {
        for (std::size_t noise = 2048; noise > 1900; --noise) {
            Bytes block = test::RandomBytes(noise, seed);
            block.resize(2048);
            if (test::RawDeflate(block).size() == 2048) {
                return block;
            }
        }
    }
}

TEST(IsoToCso, StoresABlockPlainThatDeflatesToItsSize) {
    const CTestFolder folder;
    const Bytes block = BlockThatDeflatesToItsSize();
    CRecordingOperation operation;
    IsoToCso(test::CompressionOf(folder, block, ".cso"), operation);
    const Bytes cso = test::ReadWhole(folder / "game.cso");
    EXPECT_EQ(test::Read32(cso, 24), 0x80000000U + 32);
    EXPECT_EQ(Bytes(cso.begin() + 32, cso.end()), block);
}

std::vector<std::string> PercentsFor(std::size_t blocks) {
    const CTestFolder folder;
    CRecordingOperation operation;
    IsoToCso(test::CompressionOf(folder, Bytes(blocks * 2048, 0), ".cso"), operation);
    return operation.CallsOf("pane PERCENT");
}

TEST(IsoToCso, ShowsThePercentageEveryHundredthOfTheBlocks) {
    const CTestFolder folder;
    CRecordingOperation operation;
    IsoToCso(test::CompressionOf(folder, Bytes(250 * 2048, 0), ".cso"), operation);
    const std::vector<std::string> shown = operation.CallsOf("pane BYTES");
    EXPECT_EQ(shown[1], "pane BYTES 1 block") << "first at block S - 1";
    EXPECT_EQ(shown[2], "pane BYTES 3 block");
    const std::vector<std::string> percents = operation.CallsOf("pane PERCENT");
    EXPECT_EQ(percents[percents.size() - 2], "pane PERCENT 125%") << "250 blocks are shown as 125 of 100";
    EXPECT_EQ(percents.back(), "pane PERCENT 100%");
    EXPECT_EQ(operation.CallsOf("done").size(), 250U + 1U);
    EXPECT_EQ(operation.CallsOf("yield").size(), 250U + 125U);
}

TEST(IsoToCso, ShowsThePercentageAtEveryBlockIfThereAreFew) {
    EXPECT_THAT(PercentsFor(3), ElementsAre("pane PERCENT 0%", "pane PERCENT 33%", "pane PERCENT 66%",
                                            "pane PERCENT 100%", "pane PERCENT 100%"));
    EXPECT_EQ(PercentsFor(99)[50], "pane PERCENT 50%");
    EXPECT_EQ(PercentsFor(100)[50], "pane PERCENT 50%");
    EXPECT_THAT(PercentsFor(0), ElementsAre("pane PERCENT 100%", "pane PERCENT 100%"));
}

TEST(IsoToCso, WithoutALevelEndsSilently) {
    const CTestFolder folder;
    SCompressionRequest request = test::CompressionOf(folder, Bytes(2048, 0), ".cso");
    request.level.reset();
    CRecordingOperation operation;
    IsoToCso(request, operation);
    EXPECT_EQ(operation.Calls().back(), "begin iso2cso");
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso", "game.mark.iso"));
}

TEST(IsoToCso, RefusesOtherImagesBeforeItCreatesAnything) {
    const CTestFolder folder;
    test::WriteWhole(folder / "a.b.iso", Bytes(40'000, 'P'));
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToCso(WindowRequest(folder.Path(), "a.b.iso"), operation); }),
              "Code 50 PSP - invalid PSP iso  file header  a.iso");
    test::WriteWhole(folder / "short.iso", Bytes(10, 'P'));
    EXPECT_EQ(FailureOf([&] { IsoToCso(WindowRequest(folder.Path(), "short.iso"), operation); }),
              "Code 50 PSP - invalid PSP iso  file header  short.iso");
    EXPECT_THAT(folder.Names(), ElementsAre("a.b.iso", "short.iso"));
}

/// The image in a container whose first blocks are damaged.
class CDamagedSource : public test::CMemorySource {
public:
    CDamagedSource() : CMemorySource(Bytes(40'000)) {}

    std::size_t ReadAt(std::int64_t /*position*/, std::span<std::uint8_t> /*buffer*/) override { return 0; }
    const std::string& ReadProblem() const override { return m_problem; }

private:
    std::string m_problem = "game.dax: damaged frame 4: its stream is damaged";
};

TEST(IsoToCso, SaysWhyTheMarkInAContainerCannotBeRead) {
    const CTestFolder folder;
    CDamagedSource image;
    SCompressionRequest request =
        DirectConversion(folder / "game.dax", folder / "game.cso", EOutputManner::CommitNew, 0, 9);
    request.image = &image;
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToCso(request, operation); }), image.ReadProblem());
    EXPECT_THAT(folder.Names(), ElementsAre());
}

TEST(IsoToCso, NamesMissingFiles) {
    const CTestFolder folder;
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToCso(WindowRequest(folder.Path(), "a.iso"), operation); }),
              "Code 1001e - Error Opening " + (folder / "a.iso"));
    test::WriteWhole(folder / "a.b.iso", test::WithPspMark({}));
    EXPECT_EQ(FailureOf([&] { IsoToCso(WindowRequest(folder.Path(), "a.b.iso"), operation); }),
              "Code 10010e - Error Opening " + (folder / "a.iso"));
}

TEST(IsoToCso, FindsTheImageWithoutRegardToCase) {
    const CTestFolder folder;
    test::WriteWhole(folder / "a.b.iso", test::WithPspMark({}));
    test::WriteWhole(folder / "A.ISO", Bytes(2048, 0));
    CRecordingOperation operation;
    IsoToCso(WindowRequest(folder.Path(), "a.b.iso"), operation);
    EXPECT_EQ(test::Read64(test::ReadWhole(folder / "a.cso"), 8), 2048U);
}

TEST(IsoToCso, TruncatesLongNames) {
    const CTestFolder folder;
    const std::string thirty = "abcdefghijklmnopqrstuvwxyz0123";
    test::WriteWhole(folder / (thirty + "45.iso"), test::WithPspMark({}));
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToCso(WindowRequest(folder.Path(), thirty + "45.iso"), operation); }),
              "Code 10010e - Error Opening " + (folder / (thirty + ".iso")));
}

void SetLength(const std::string& path, std::int64_t length) {
    CNativeFile file;
    ASSERT_TRUE(file.Open(path, EOpenMode::ReadWrite, ESharing::Anyone));
    ASSERT_TRUE(file.Resize(length));
}

TEST(IsoToCso, AcceptsOneByteLessThanTwoGibibytes) {
    const CTestFolder folder;
    const SCompressionRequest request = test::CompressionOf(folder, {}, ".cso");
    SetLength(folder / "game.iso", (std::int64_t{1} << 31) - 1);
    CRecordingOperation operation;
    operation.m_onYield = [](int) { throw std::runtime_error("interrupted"); };
    EXPECT_THROW(IsoToCso(request, operation), std::runtime_error);
    EXPECT_THAT(operation.CallsOf("pane BYTES"), ElementsAre("pane BYTES 1048575 Frames"));
}

TEST(IsoToCso, RefusesTwoGibibytesAndMore) {
    const CTestFolder folder;
    const SCompressionRequest request = test::CompressionOf(folder, {}, ".cso");
    for (const std::int64_t length : {std::int64_t{1} << 31, (std::int64_t{1} << 32) + 2048}) {
        SetLength(folder / "game.iso", length);
        CRecordingOperation operation;
        EXPECT_EQ(FailureOf([&] { IsoToCso(request, operation); }),
                  "Code 1003-Can't get file siz " + (folder / "game.iso") + "\n");
    }
    EXPECT_EQ(FileKindOf(folder / "game.cso"), EFileKind::Missing);
}

void ExpandsTo(const CTestFolder& folder, const Bytes& image) {
    COperation operation;
    CsoToIso(DirectConversion(folder / "game.cso", folder / "back.iso", EOutputManner::CommitReplace, 2, 9), operation);
    EXPECT_TRUE(test::ReadWhole(folder / "back.iso") == image);
}

TEST(IsoToCso, ShiftsThePositionsOfAnOutputThatItsIndexCannotAddressIfStrict) {
    const CTestFolder folder;
    const Bytes image = test::RandomBytes(2048 * 40, 3);
    test::WriteWhole(folder / "game.iso", test::WithPspMark(image));
    test::WriteWhole(folder / "game.cso", Bytes(10, 'o'));
    SCompressionRequest request =
        DirectConversion(folder / "game.iso", folder / "game.cso", EOutputManner::CommitReplace, 2, 9);
    const std::int64_t end = 24 + 4 * 41 + 2048 * 40;
    request.largestCso = 50'000;
    CRecordingOperation operation;
    IsoToCso(request, operation);
    const Bytes shifted = test::ReadWhole(folder / "game.cso");
    EXPECT_EQ(test::Read32(shifted, 16), 16384U);
    EXPECT_EQ(shifted[21], 1);
    EXPECT_EQ(shifted.size(), std::size_t{test::Read32(shifted, 24 + 4 * 5)} << 1U);
    ExpandsTo(folder, test::ReadWhole(folder / "game.iso"));
    request.blockSize = 2048;
    IsoToCso(request, operation);
    EXPECT_EQ(test::Read32(test::ReadWhole(folder / "game.cso"), 16), 2048U);
    EXPECT_EQ(test::ReadWhole(folder / "game.cso")[21], 1);
    ExpandsTo(folder, test::ReadWhole(folder / "game.iso"));
    EXPECT_THAT(folder.Names(), ElementsAre("back.iso", "game.cso", "game.iso"));
    request.blockSize.reset();
    request.largestCso = end - 1;
    IsoToCso(request, operation);
    EXPECT_EQ(test::ReadWhole(folder / "game.cso")[21], 0) << "the larger blocks suffice";
    ExpandsTo(folder, test::ReadWhole(folder / "game.iso"));
    request.strict = false;
    IsoToCso(request, operation);
    request.strict = true;
    request.largestCso = end;
    IsoToCso(request, operation);
    EXPECT_EQ(test::ReadWhole(folder / "game.cso").size(), static_cast<std::size_t>(end));
    EXPECT_EQ(SCompressionRequest().largestCso, 0x7FFFFFFF) << "bit 31 marks plain blocks";
}

TEST(IsoToCso, PadsEachBlockToWhatTheShiftCanExpress) {
    const CTestFolder folder;
    Bytes image = test::TextLikeBytes(2048 * 40, 3);
    const Bytes random = test::RandomBytes(2048 * 20, 4);
    std::copy(random.begin(), random.end(), image.begin());
    test::WriteWhole(folder / "game.iso", test::WithPspMark(image));
    SCompressionRequest request =
        DirectConversion(folder / "game.iso", folder / "game.cso", EOutputManner::CommitReplace, 2, 9);
    request.blockSize = 2048;
    for (const auto& [largest, shift] : {std::pair(10'000, 4), std::pair(1'000, 7)}) {
        request.largestCso = largest;
        CRecordingOperation operation;
        IsoToCso(request, operation);
        const Bytes cso = test::ReadWhole(folder / "game.cso");
        EXPECT_EQ(cso[21], shift);
        EXPECT_EQ(cso.size(), std::size_t{test::Read32(cso, 24 + 4 * 40)} << shift);
        ExpandsTo(folder, test::ReadWhole(folder / "game.iso"));
    }
}

TEST(IsoToCso, NamesAnOutputThatCannotBeCreated) {
    const CTestFolder folder;
    SCompressionRequest request = test::CompressionOf(folder, Bytes(2048, 0), ".cso");
    request.outputPath = folder / "no folder/game.cso";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToCso(request, operation); }),
              "Code 10010g - Error create " + (folder / "no folder/game.cso"));
}

TEST(IsoToCso, ReportsAnImageThatShrinks) {
    const CTestFolder folder;
    const SCompressionRequest request = test::CompressionOf(folder, Bytes(std::size_t{1} << 20, 0), ".cso");
    CRecordingOperation operation;
    operation.m_onYield = [&](int yield) {
        if (yield == 1) {
            test::WriteWhole(folder / "game.iso", Bytes(5000, 0));
        }
    };
    EXPECT_EQ(FailureOf([&] { IsoToCso(request, operation); }), "Code 1007-block 2 : read error\n");
    const Bytes partial = test::ReadWhole(folder / "game.cso");
    EXPECT_GT(partial.size(), 24U + 4U * 513U) << "the partial output stays";
    EXPECT_EQ(Bytes(partial.begin() + 24, partial.begin() + 24 + 4 * 513), Bytes(std::size_t{4} * 513, 0))
        << "its index is zero";
}

TEST(IsoToCso, LeavesNothingAfterATransactionalFailure) {
    const CTestFolder folder;
    SCompressionRequest request = test::CompressionOf(folder, Bytes(std::size_t{1} << 20, 0), ".cso");
    request.manner = EOutputManner::CommitNew;
    CRecordingOperation operation;
    operation.m_onYield = [&](int yield) {
        if (yield == 1) {
            test::WriteWhole(folder / "game.iso", Bytes(5000, 0));
        }
    };
    EXPECT_EQ(FailureOf([&] { IsoToCso(request, operation); }), "Code 1007-block 2 : read error\n");
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso", "game.mark.iso"));
}

TEST(IsoToCso, ReportsNothingIfTheCompletionIsLeftEarly) {
    const CTestFolder folder;
    CRecordingOperation operation;
    operation.m_completes = false;
    IsoToCso(test::CompressionOf(folder, Bytes(2048, 0), ".cso"), operation);
    EXPECT_EQ(operation.Calls().back(), "complete Compression iso2cso Done !");
}

#ifdef __linux__
TEST(IsoToCso, ReportsAFullDiskWithTheBlock) {
    const CTestFolder folder;
    SCompressionRequest request = test::CompressionOf(folder, test::RandomBytes(2048 * 4, 3), ".cso");
    request.outputPath = "/dev/full";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToCso(request, operation); }), "Code 1009-block 0 : Write error\n");
    request.outputPath = folder / "game.cso";
    constexpr std::size_t kStart = 24 + 4 * 5;
    for (const std::size_t block : {1, 3}) {
        const test::CFileSizeLimit limit(kStart + 2048 * block + 100);
        EXPECT_EQ(FailureOf([&] { IsoToCso(request, operation); }),
                  "Code 1009-block " + std::to_string(block) + " : Write error\n");
        EXPECT_EQ(test::ReadWhole(folder / "game.cso").size(), kStart + 2048 * block + 100) << "what was written stays";
    }
}
#endif

}  // namespace
}  // namespace vantrel
