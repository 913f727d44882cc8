// iso2dax and dax2iso: order of calls, texts, bytes of the DAX file, hand-made and hostile DAX files.
#include "compress/dax.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/file_size_limit.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/compress/cso_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;
using testing::ElementsAre;

constexpr std::size_t kFrame = 8192;

SCompressionRequest CompressionOf(const CTestFolder& folder, const Bytes& image) {
    return test::CompressionOf(folder, image, ".dax");
}

Bytes Joined(const std::vector<Bytes>& parts) {
    Bytes whole;
    for (const Bytes& part : parts) {
        whole.insert(whole.end(), part.begin(), part.end());
    }
    return whole;
}

Bytes Zlib(const Bytes& bytes) {
    uLongf length = compressBound(static_cast<uLong>(bytes.size()));
    Bytes stored(length);
    compress2(stored.data(), &length, bytes.data(), static_cast<uLong>(bytes.size()), 9);
    stored.resize(length);
    return stored;
}

/// A hand-made DAX file. Positions and lengths follow from the frames unless a test changes them.
struct SHandMadeDax {
    std::uint32_t magic = 0x00584144U;
    std::uint32_t imageSize = 0;
    std::uint32_t version = 0xAAAAAAAAU;  ///< Read by strict expansions only.
    std::vector<std::uint32_t> positions;
    std::vector<std::uint16_t> lengths;
    Bytes data;

    explicit SHandMadeDax(const std::vector<Bytes>& frames) {
        for (const Bytes& frame : frames) {
            const Bytes stored = Zlib(frame);
            positions.push_back(static_cast<std::uint32_t>(32 + 6 * frames.size() + data.size()));
            lengths.push_back(static_cast<std::uint16_t>(stored.size()));
            data = Joined({data, stored});
            imageSize += static_cast<std::uint32_t>(frame.size());
        }
    }

    Bytes Encode() const {
        Bytes bytes(32 + 4 * positions.size() + 2 * lengths.size());
        test::Write32(bytes, 0, magic);
        test::Write32(bytes, 4, imageSize);
        test::Write32(bytes, 8, version);
        std::fill(bytes.begin() + 12, bytes.begin() + 32, std::uint8_t{0xAA});  // no areas without version 1
        std::size_t at = 32;
        for (const std::uint32_t position : positions) {
            test::Write32(bytes, at, position);
            at += 4;
        }
        for (const std::uint16_t length : lengths) {
            bytes[at++] = static_cast<std::uint8_t>(length);
            bytes[at++] = static_cast<std::uint8_t>(length >> 8U);
        }
        bytes.insert(bytes.end(), data.begin(), data.end());
        return bytes;
    }
};

SCompressionRequest ExpansionRequest(const CTestFolder& folder, const Bytes& content) {
    test::WriteWhole(folder / "game.dax", content);
    return WindowDaxExpansion(folder.Path(), "game.dax");
}

Bytes Expanded(const Bytes& content) {
    const CTestFolder folder;
    CRecordingOperation operation;
    DaxToIso(ExpansionRequest(folder, content), operation);
    return test::ReadWhole(folder / "new-game.iso");
}

std::string FailureOfExpanding(const Bytes& content) {
    const CTestFolder folder;
    CRecordingOperation operation;
    return FailureOf([&] { DaxToIso(ExpansionRequest(folder, content), operation); });
}

TEST(IsoToDax, MakesItsCallsInOrder) {
    const CTestFolder folder;
    CRecordingOperation operation;
    IsoToDax(CompressionOf(folder, Bytes(2 * kFrame, 0)), operation);
    const std::string output = folder / "game.dax";
    const std::string size = std::to_string(test::ReadWhole(output).size());
    EXPECT_THAT(
        operation.Calls(),
        ElementsAre("pane STATUS Compression ISO2DAX, please Wait", "begin iso2dax", "pane BYTES 2 Frames",
                    "pane FILE game.iso", "total 2",         //
                    "pane PERCENT 50%", "done 1", "yield",   //
                    "pane PERCENT 100%", "done 2", "yield",  //
                    "done 2", "yield",                       // for the read that finds the end
                    "done 2", "pane FILE " + output, "pane PERCENT 100%", "pane STATUS Compression iso2dax Done !",
                    "complete Compression iso2dax Done !", "pane BYTES " + size + " bytes", "completed"));
}

TEST(IsoToDax, WritesHeaderAndTables) {
    const CTestFolder folder;
    CRecordingOperation operation;
    IsoToDax(CompressionOf(folder, Joined({test::RandomBytes(kFrame, 1), Bytes(100, 7)})), operation);
    const Bytes dax = test::ReadWhole(folder / "game.dax");
    EXPECT_EQ(Bytes(dax.begin(), dax.begin() + 4), (Bytes{'D', 'A', 'X', 0}));
    EXPECT_EQ(test::Read32(dax, 4), kFrame + 100);
    EXPECT_EQ(Bytes(dax.begin() + 8, dax.begin() + 32), Bytes(24, 0));
    EXPECT_EQ(test::Read32(dax, 32), 32U + 2 * 6U);
    const auto first = static_cast<std::uint32_t>(dax[40] | dax[41] << 8);
    EXPECT_GT(first, kFrame) << "a frame that does not shrink is still deflated";
    EXPECT_EQ(test::Read32(dax, 36), 44 + first);
    EXPECT_EQ(dax.size(), 44 + first + static_cast<std::size_t>(dax[42] | dax[43] << 8));
}

TEST(IsoToDax, CountsOnlyWholeFramesInThePercentage) {
    const CTestFolder folder;
    CRecordingOperation operation;
    IsoToDax(CompressionOf(folder, Bytes(2 * kFrame + 1, 0)), operation);
    EXPECT_THAT(operation.CallsOf("pane PERCENT"),
                ElementsAre("pane PERCENT 50%", "pane PERCENT 100%", "pane PERCENT 150%", "pane PERCENT 100%"));
    EXPECT_THAT(operation.CallsOf("total"), ElementsAre("total 2"));
    EXPECT_THAT(operation.CallsOf("done"), ElementsAre("done 1", "done 2", "done 2", "done 2"))
        << "never above the total";
    EXPECT_EQ(operation.CallsOf("yield").size(), 3U);
    EXPECT_THAT(operation.CallsOf("pane BYTES 2 Frames"), testing::SizeIs(1));
}

TEST(IsoToDax, ShowsAnImageShorterThanAFrameAsComplete) {
    const CTestFolder folder;
    CRecordingOperation operation;
    IsoToDax(CompressionOf(folder, Bytes(100, 1)), operation);
    EXPECT_THAT(operation.CallsOf("pane PERCENT"), ElementsAre("pane PERCENT 100%", "pane PERCENT 100%"));
    EXPECT_THAT(operation.CallsOf("total"), ElementsAre("total 0"));
    EXPECT_THAT(operation.CallsOf("done"), ElementsAre("done 0", "done 0"));
}

TEST(IsoToDax, WithoutALevelLeavesAnEmptyOutput) {
    const CTestFolder folder;
    SCompressionRequest request = CompressionOf(folder, Bytes(kFrame, 0));
    request.level.reset();
    CRecordingOperation operation;
    IsoToDax(request, operation);
    EXPECT_EQ(operation.Calls().back(), "begin iso2dax");
    EXPECT_EQ(test::ReadWhole(folder / "game.dax"), Bytes{});
}

TEST(IsoToDax, NamesFilesThatCannotBeUsed) {
    const CTestFolder folder;
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToDax(WindowCompression(folder.Path(), "a.iso", ".dax"), operation); }),
              "Code 9101e - Error Opening " + (folder / "a.iso"));
    test::WriteWhole(folder / "a.b.iso", Bytes(40'000, 'P'));
    EXPECT_EQ(FailureOf([&] { IsoToDax(WindowCompression(folder.Path(), "a.b.iso", ".dax"), operation); }),
              "Code 50 PSP - invalid PSP iso  file header  a.iso");
    test::WriteWhole(folder / "a.b.iso", test::WithPspMark({}));
    EXPECT_EQ(FailureOf([&] { IsoToDax(WindowCompression(folder.Path(), "a.b.iso", ".dax"), operation); }),
              "Code 903- Cannot open input file " + (folder / "a.iso") + "\n");
    SCompressionRequest request = CompressionOf(folder, Bytes(kFrame, 0));
    request.outputPath = folder / "no folder/game.dax";
    EXPECT_EQ(FailureOf([&] { IsoToDax(request, operation); }),
              "Code 903o-Cannot create output file " + (folder / "no folder/game.dax") + "\n");
}

TEST(IsoToDax, RefusesFourGibibytesAndMore) {
    const CTestFolder folder;
    const SCompressionRequest request = CompressionOf(folder, {});
    for (const std::int64_t length : {(std::int64_t{1} << 32) - 1, std::int64_t{1} << 32, std::int64_t{1} << 33}) {
        CNativeFile file;
        ASSERT_TRUE(file.Open(folder / "game.iso", EOpenMode::ReadWrite, ESharing::Anyone));
        ASSERT_TRUE(file.Resize(length));
        ASSERT_TRUE(file.Close());
        CRecordingOperation operation;
        EXPECT_EQ(FailureOf([&] { IsoToDax(request, operation); }), "Error getting file size.\n");
    }
    EXPECT_EQ(test::ReadWhole(folder / "game.dax"), Bytes{});
}

TEST(IsoToDax, RefusesAnImageThatGrows) {
    const CTestFolder folder;
    const SCompressionRequest request = CompressionOf(folder, Bytes(100 * kFrame, 1));
    CRecordingOperation operation;
    operation.m_onYield = [&](int yield) {
        if (yield == 1) {
            test::WriteWhole(folder / "game.iso", Bytes(200 * kFrame, 1));
        }
    };
    EXPECT_EQ(FailureOf([&] { IsoToDax(request, operation); }), "Error getting file size.\n");
}

TEST(IsoToDax, RefusesAnImageThatShrinksIfStrict) {
    for (const bool strict : {false, true}) {
        const CTestFolder folder;
        SCompressionRequest request = CompressionOf(folder, Bytes(100 * kFrame, 1));
        request.manner = EOutputManner::CommitReplace;
        request.strict = strict;
        CRecordingOperation operation;
        operation.m_onYield = [&](int yield) {
            if (yield == 1) {
                test::WriteWhole(folder / "game.iso", Bytes(5, 1));
            }
        };
        const std::string text = FailureOf([&] { IsoToDax(request, operation); });
        if (!strict) {
            EXPECT_EQ(text, "did not fail");
            const Bytes dax = test::ReadWhole(folder / "game.dax");
            EXPECT_EQ(test::Read32(dax, 32 + 4 * 99), 0U) << "frames that were not read have no entry";
        } else {
            EXPECT_EQ(text, "I/O error reading " + (folder / "game.iso") + "\n");
            EXPECT_THAT(folder.Names(), ElementsAre("game.iso", "game.mark.iso"));
        }
    }
}

#ifdef __linux__
TEST(IsoToDax, ReportsAFullDisk) {
    const CTestFolder folder;
    SCompressionRequest request = CompressionOf(folder, test::RandomBytes(kFrame, 3));
    request.outputPath = "/dev/full";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToDax(request, operation); }), "I/O write error.\n");
}

TEST(IsoToDax, ReportsADiskThatIsFullAtAFrame) {
    const CTestFolder folder;
    const SCompressionRequest request = CompressionOf(folder, test::RandomBytes(3 * kFrame, 3));
    CRecordingOperation operation;
    const test::CFileSizeLimit limit(32 + 6 * 3 + 2 * kFrame);  // random frames grow a little
    EXPECT_EQ(FailureOf([&] { IsoToDax(request, operation); }), "I/O write error.\n");
    EXPECT_THAT(operation.CallsOf("done"), ElementsAre("done 1"));
}

/// Names of the files in a folder that this process has open.
std::vector<std::string> OpenFilesIn(const CTestFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string path = std::filesystem::read_symlink(entry.path(), error).string();
        if (path.starts_with(folder.Path())) {
            names.push_back(path.substr(folder.Path().size()));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(DaxConversions, LeaveBothFilesOpenIfTheyEndEarly) {
    const CTestFolder folder;
    CRecordingOperation operation;
    SCompressionRequest compression = CompressionOf(folder, Bytes(kFrame, 0));
    IsoToDax(compression, operation);
    DaxToIso(WindowDaxExpansion(folder.Path(), "game.dax"), operation);
    EXPECT_THAT(OpenFilesIn(folder), ElementsAre());
    operation.m_completes = false;
    DaxToIso(WindowDaxExpansion(folder.Path(), "game.dax"), operation);
    EXPECT_THAT(OpenFilesIn(folder), ElementsAre("game.dax", "new-game.iso"));
    compression.level.reset();
    IsoToDax(compression, operation);
    EXPECT_THAT(OpenFilesIn(folder), ElementsAre("game.dax", "game.dax", "game.iso", "new-game.iso"));
}
#endif

TEST(DaxToIso, MakesItsCallsInOrder) {
    const CTestFolder folder;
    const Bytes first(kFrame, 1);
    const Bytes second(100, 2);
    CRecordingOperation operation;
    DaxToIso(ExpansionRequest(folder, SHandMadeDax({first, second}).Encode()), operation);
    EXPECT_THAT(operation.Calls(),
                ElementsAre("pane STATUS Decompressing DAX2ISO, please Wait", "begin dax2iso", "pane BYTES 2 Frames",
                            "pane FILE game.iso", "total 2",        //
                            "pane PERCENT 0%", "pane PERCENT 50%",  // no yield between the frames
                            "done 1", "yield", "done 2", "pane FILE " + (folder / "new-game.iso"), "pane PERCENT 100%",
                            "pane STATUS Decompression dax2iso Done !", "complete Decompression dax2iso Done !",
                            "pane BYTES 8292 bytes", "completed"));
    EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), Joined({first, second}));
}

TEST(DaxToIso, ReadsTheBaseNameWithItsOwnExtension) {
    const CTestFolder folder;
    test::WriteWhole(folder / "GAME.DAX", SHandMadeDax({Bytes(10, 1)}).Encode());
    CRecordingOperation operation;
    DaxToIso(WindowDaxExpansion(folder.Path(), "game.old.dax"), operation);
    EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), Bytes(10, 1));
}

TEST(DaxToIso, NamesTheOtherFileInEachOpeningText) {
    const CTestFolder folder;
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { DaxToIso(WindowDaxExpansion(folder.Path(), "a.dax"), operation); }),
              "Code 1003- Cannot open input file " + (folder / "new-a.iso") + "\n");
    SCompressionRequest request = ExpansionRequest(folder, SHandMadeDax({}).Encode());
    request.outputPath = folder / "no folder/new-game.iso";
    EXPECT_EQ(FailureOf([&] { DaxToIso(request, operation); }),
              "Code 1003o-Cannot create output file " + (folder / "game.dax") + "\n");
}

TEST(DaxToIso, RefusesOtherFiles) {
    EXPECT_EQ(FailureOfExpanding({}), "Input is not a valid DAX file.\n");
    const Bytes whole = SHandMadeDax({}).Encode();
    EXPECT_EQ(FailureOfExpanding(Bytes(whole.begin(), whole.end() - 1)), "Input is not a valid DAX file.\n");
    SHandMadeDax other({});
    other.magic = 0x20584144U;
    EXPECT_EQ(FailureOfExpanding(other.Encode()), "Input is not a valid DAX file.\n");
}

TEST(DaxToIso, WritesAnEmptyImage) {
    const CTestFolder folder;
    CRecordingOperation operation;
    DaxToIso(ExpansionRequest(folder, SHandMadeDax({}).Encode()), operation);
    EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), Bytes{});
    EXPECT_THAT(operation.CallsOf("done"), ElementsAre("done 0", "done 0"));
    EXPECT_EQ(operation.CallsOf("yield").size(), 1U);
}

TEST(DaxToIso, RefusesTablesLargerThanTheFile) {
    SHandMadeDax dax({Bytes(kFrame, 1)});
    dax.imageSize = 0xFFFFFFFFU;
    EXPECT_EQ(FailureOfExpanding(dax.Encode()), "Corrupted input file.\n");
    const Bytes whole = SHandMadeDax({Bytes(kFrame, 1)}).Encode();
    EXPECT_EQ(FailureOfExpanding(Bytes(whole.begin(), whole.begin() + 35)), "Corrupted input file.\n");
    EXPECT_EQ(FailureOfExpanding(Bytes(whole.begin(), whole.begin() + 37)), "Corrupted input file.\n");
}

TEST(DaxToIso, RefusesFramesOutsideTheFileOrLargerThanTheBuffer) {
    SHandMadeDax dax({Bytes(kFrame, 1)});
    dax.positions[0] = 0xFFFFFFF0U;
    EXPECT_EQ(FailureOfExpanding(dax.Encode()), "Input seems to be corrupted.\n");
    dax = SHandMadeDax({Bytes(kFrame, 1)});
    ++dax.lengths[0];
    EXPECT_EQ(FailureOfExpanding(dax.Encode()), "Input seems to be corrupted.\n");
    dax = SHandMadeDax({Bytes(kFrame, 1)});
    dax.lengths[0] = 9217;
    dax.data.resize(20'000);
    EXPECT_EQ(FailureOfExpanding(dax.Encode()), "Input seems to be corrupted.\n");
}

TEST(DaxToIso, RefusesDamagedStreams) {
    SHandMadeDax dax({Bytes(kFrame, 1)});
    dax.data.back() ^= 1;  // the check value
    EXPECT_EQ(FailureOfExpanding(dax.Encode()), "Error while decompressing (corrupt input?)\n");
    dax = SHandMadeDax({Bytes(kFrame + 1, 1)});
    dax.imageSize = kFrame;
    EXPECT_EQ(FailureOfExpanding(dax.Encode()), "Error while decompressing (corrupt input?)\n") << "a frame too long";
    dax = SHandMadeDax({Bytes(kFrame, 1)});
    dax.lengths[0] = 0;
    EXPECT_EQ(FailureOfExpanding(dax.Encode()), "Error while decompressing (corrupt input?)\n");
}

TEST(DaxToIso, ReadsFramesInAnyOrder) {
    SHandMadeDax dax({Bytes(kFrame, 1), Bytes(kFrame, 2), Bytes(kFrame, 3)});
    std::swap(dax.positions[0], dax.positions[2]);
    std::swap(dax.lengths[0], dax.lengths[2]);
    dax.positions[1] = dax.positions[0];
    dax.lengths[1] = dax.lengths[0];
    EXPECT_EQ(Expanded(dax.Encode()), Joined({Bytes(2 * kFrame, 3), Bytes(kFrame, 1)}));
}

TEST(DaxToIso, WritesTheSumOfTheFrameLengths) {
    SHandMadeDax dax({Bytes(10, 1), Bytes(20, 2)});
    dax.imageSize = 2 * kFrame;
    EXPECT_EQ(Expanded(dax.Encode()), Joined({Bytes(10, 1), Bytes(20, 2)}));
}

TEST(DaxToIso, TakesEveryFrameAsAStreamUnlessStrict) {
    SHandMadeDax dax({Bytes(kFrame, 1), Bytes(kFrame, 2)});
    dax.imageSize = kFrame + 100;
    dax.version = 1;  // with more areas than the file can hold
    EXPECT_EQ(Expanded(dax.Encode()), Joined({Bytes(kFrame, 1), Bytes(kFrame, 2)}));
}

TEST(DaxToIso, ReportsNothingIfTheCompletionIsLeftEarly) {
    const CTestFolder folder;
    CRecordingOperation operation;
    operation.m_completes = false;
    DaxToIso(ExpansionRequest(folder, SHandMadeDax({Bytes(10, 1)}).Encode()), operation);
    EXPECT_EQ(operation.Calls().back(), "complete Decompression dax2iso Done !");
    EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), Bytes(10, 1));
}

TEST(DaxToIso, LeavesNothingAfterATransactionalFailure) {
    const CTestFolder folder;
    SHandMadeDax dax({Bytes(kFrame, 1), Bytes(kFrame, 2)});
    dax.data.back() ^= 1;
    SCompressionRequest request = ExpansionRequest(folder, dax.Encode());
    request.manner = EOutputManner::CommitNew;
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { DaxToIso(request, operation); }), "Error while decompressing (corrupt input?)\n");
    EXPECT_THAT(folder.Names(), ElementsAre("game.dax"));
}

TEST(DaxToIso, AStrictRunReportsEveryFrame) {
    const CTestFolder folder;
    SHandMadeDax dax({Bytes(kFrame, 1), Bytes(5, 2)});
    dax.version = 0;
    SCompressionRequest request = ExpansionRequest(folder, dax.Encode());
    request.strict = true;
    CRecordingOperation operation;
    DaxToIso(request, operation);
    EXPECT_THAT(operation.CallsOf("done"), ElementsAre("done 1", "done 2", "done 2"));
    EXPECT_EQ(operation.CallsOf("yield").size(), 2U);
}

#ifdef __linux__
TEST(DaxToIso, ReportsAFullDisk) {
    const CTestFolder folder;
    SCompressionRequest request = ExpansionRequest(folder, SHandMadeDax({Bytes(10, 1)}).Encode());
    request.outputPath = "/dev/full";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { DaxToIso(request, operation); }), "I/O error writing to output file.\n");
}
#endif

}  // namespace
}  // namespace vantrel
