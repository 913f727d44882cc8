// cso2iso: order of calls, texts, CSO files of other programs, hostile CSO files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compress/cso.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/compress/cso_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;
using test::SHandMadeCso;
using testing::ElementsAre;

constexpr std::uint32_t kPlain = 0x80000000U;

/// The text of the failure, without the folder.
std::string FailureOfExpanding(const Bytes& content) {
    const CTestFolder folder;
    const SCompressionRequest request = test::ExpansionOf(folder, content);
    CRecordingOperation operation;
    std::string text = FailureOf([&] { CsoToIso(request, operation); });
    for (std::size_t at = 0; (at = text.find(folder.Path())) != std::string::npos;) {
        text.erase(at, folder.Path().size());
    }
    return text;
}

Bytes Expanded(const Bytes& content) {
    const CTestFolder folder;
    CRecordingOperation operation;
    CsoToIso(test::ExpansionOf(folder, content), operation);
    return test::ReadWhole(folder / "new-game.iso");
}

TEST(CsoToIso, MakesItsCallsInOrder) {
    const CTestFolder folder;
    const SHandMadeCso cso = test::CsoOf({Bytes(2048, 1), Bytes(2048, 2)}, 0);
    CRecordingOperation operation;
    CsoToIso(test::ExpansionOf(folder, cso.Encode()), operation);
    EXPECT_THAT(operation.Calls(),
                ElementsAre("pane STATUS DeCompression CSO2ISO, please Wait", "begin cso2iso", "pane BYTES 2 Blocks",
                            "pane FILE new-game.iso", "total 2", "yield", "yield",                    //
                            "yield", "pane PERCENT 0%", "pane BYTES 0 block", "yield", "done 1",      //
                            "yield", "pane PERCENT 50%", "pane BYTES 1 block", "yield", "done 2",     //
                            "pane PERCENT 100%", "pane BYTES 2 block", "yield",                       //
                            "done 2", "pane FILE " + (folder / "new-game.iso"), "pane PERCENT 100%",  //
                            "pane STATUS ciso decompress cso2iso Done !",                             //
                            "complete ciso decompress cso2iso Done !", "pane BYTES 4096 bytes", "completed"));
}

TEST(CsoToIso, ShowsTextsFromTheFirstBlockOn) {
    const CTestFolder folder;
    CRecordingOperation operation;
    CsoToIso(test::ExpansionOf(folder, test::CsoOf(std::vector<Bytes>(250, Bytes(2048, 1)), 0).Encode()), operation);
    const std::vector<std::string> shown = operation.CallsOf("pane BYTES");
    EXPECT_EQ(shown[1], "pane BYTES 0 block");
    EXPECT_EQ(shown[2], "pane BYTES 2 block");
    const std::vector<std::string> percents = operation.CallsOf("pane PERCENT");
    EXPECT_EQ(percents[percents.size() - 2], "pane PERCENT 125%");
}

TEST(CsoToIso, WithoutALevelEndsSilently) {
    const CTestFolder folder;
    SCompressionRequest request = test::ExpansionOf(folder, {});
    request.level.reset();
    CRecordingOperation operation;
    CsoToIso(request, operation);
    EXPECT_EQ(operation.Calls().back(), "begin cso2iso");
    EXPECT_THAT(folder.Names(), ElementsAre("game.cso"));
}

TEST(CsoToIso, LeavesOutAPartialLastBlock) {
    SHandMadeCso cso = test::CsoOf({Bytes(2048, 7), Bytes(2048, 8)}, 0);
    cso.totalBytes += 2047;
    Bytes expected(4096, 7);
    std::fill(expected.begin() + 2048, expected.end(), 8);
    EXPECT_EQ(Expanded(cso.Encode()), expected);
}

TEST(CsoToIso, ReadsAlignedBlocks) {
    const Bytes first = test::TextLikeBytes(2048, 1);
    const Bytes second = test::TextLikeBytes(2048, 2);
    Bytes expected = first;
    expected.insert(expected.end(), second.begin(), second.end());
    for (const int align : {1, 4, 7}) {
        const SHandMadeCso cso = test::CsoOf({first, second}, static_cast<std::uint8_t>(align));
        EXPECT_EQ(Expanded(cso.Encode()), expected) << align;
    }
}

TEST(CsoToIso, ReadsOtherBlockSizes) {
    SHandMadeCso cso = test::CsoOf({test::TextLikeBytes(8192, 1)}, 0);
    cso.blockSize = 8192;
    EXPECT_EQ(Expanded(cso.Encode()), test::TextLikeBytes(8192, 1));
}

TEST(CsoToIso, ReadsAPlainBlockWhateverTheNextEntryIs) {
    SHandMadeCso cso;
    cso.totalBytes = 2048;
    cso.data = test::RandomBytes(2048, 4);
    cso.index = {32 | kPlain, 33};
    EXPECT_EQ(Expanded(cso.Encode()), cso.data);
    cso.index = {32 | kPlain, 1};
    EXPECT_EQ(Expanded(cso.Encode()), cso.data);
    Bytes version2 = cso.Encode();
    version2[20] = 2;  // where the mark means LZ4, which the window does not know
    EXPECT_EQ(Expanded(version2), cso.data);
}

TEST(CsoToIso, IgnoresHeaderSizeVersionAndReservedBytes) {
    const Bytes block = test::TextLikeBytes(2048, 1);
    Bytes cso = test::CsoOf({block}, 0).Encode();
    for (const std::size_t offset : {4, 5, 6, 7, 20, 22, 23}) {
        for (const int value : {0, 1, 2, 3, 24, 25, 255}) {
            Bytes changed = cso;
            changed[offset] = static_cast<std::uint8_t>(value);
            EXPECT_EQ(Expanded(changed), block) << offset << " " << value;
        }
    }
}

TEST(CsoToIso, NamesTheOutputIfTheInputIsMissing) {
    const CTestFolder folder;
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { CsoToIso(test::WithLevel(WindowExpansion(folder.Path(), "no.cso")), operation); }),
              "Code 11010e - Error Opening " + (folder / "new-no.iso"));
    EXPECT_TRUE(folder.Names().empty());
}

TEST(CsoToIso, NamesAnOutputThatCannotBeCreated) {
    const CTestFolder folder;
    SCompressionRequest request = test::ExpansionOf(folder, test::CsoOf({Bytes(2048, 1)}, 0).Encode());
    request.outputPath = folder / "no folder/x.iso";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { CsoToIso(request, operation); }), "Code 11010g - Error create " + request.outputPath);
}

TEST(CsoToIso, RefusesBadHeaders) {
    EXPECT_EQ(FailureOfExpanding(Bytes(23, 'C')), "Code 11010e - Error Opening new-game.iso");
    EXPECT_EQ(FailureOfExpanding({}), "Code 11010e - Error Opening new-game.iso");
    const std::string format = "Code 11011 - ciso file format error new-game.iso";
    SHandMadeCso cso = test::CsoOf({Bytes(2048, 1)}, 0);
    cso.magic = "CISo";
    EXPECT_EQ(FailureOfExpanding(cso.Encode()), format);
    cso.magic = "CISO";
    cso.blockSize = 0;
    EXPECT_EQ(FailureOfExpanding(cso.Encode()), format);
    cso.blockSize = 2048;
    cso.totalBytes = 0;
    EXPECT_EQ(FailureOfExpanding(cso.Encode()), format);
}

TEST(CsoToIso, RefusesAnIndexLargerThanTheFileBeforeAllocation) {
    SHandMadeCso cso = test::CsoOf({Bytes(2048, 1)}, 0);
    for (const std::uint64_t total : {std::uint64_t{1} << 30, std::uint64_t{1} << 62, ~std::uint64_t{0}}) {
        cso.totalBytes = total;
        EXPECT_EQ(FailureOfExpanding(cso.Encode()), "Code 1105-file read error game.cso\n");
    }
    cso.blockSize = 1;
    EXPECT_EQ(FailureOfExpanding(cso.Encode()), "Code 1105-file read error game.cso\n");
    Bytes cut = test::CsoOf({Bytes(2048, 1)}, 0).Encode();
    cut.resize(24 + 7);
    EXPECT_EQ(FailureOfExpanding(cut), "Code 1105-file read error game.cso\n");
}

TEST(CsoToIso, RefusesAHugeBlockSizeBeforeAllocation) {
    SHandMadeCso cso = test::CsoOf({Bytes(2048, 1)}, 0);
    cso.blockSize = 0xFFFFFFFFU;
    cso.totalBytes = 0xFFFFFFFFU;
    EXPECT_EQ(FailureOfExpanding(cso.Encode()), "Code 1104-Can't allocate memory game.cso\n");
}

TEST(CsoToIso, RefusesIndexEntriesOutsideTheFile) {
    const std::string text = "Code 1107-block 0 : read error\n";
    SHandMadeCso cso = test::CsoOf({Bytes(2048, 1), Bytes(2048, 2)}, 0);
    const std::vector<std::uint32_t> good = cso.index;
    const auto with = [&](std::vector<std::uint32_t> index) {
        cso.index = std::move(index);
        return FailureOfExpanding(cso.Encode());
    };
    EXPECT_EQ(with({0x00FFFFFF, 0x01000000, good[2]}), text) << "outside the file";
    EXPECT_EQ(with({good[1], good[0], good[2]}), text) << "backwards";
    EXPECT_EQ(with({good[0], good[0] + 4097, good[2]}), text) << "more than the buffer holds";
    EXPECT_EQ(with({0x00FFFFFF | kPlain, good[1], good[2]}), text) << "plain, outside the file";
}

/// Expands a CSO file of one plain block, which its file holds at this position.
std::string FailureOfBlockAt(std::uint64_t position, const Bytes& block) {
    const CTestFolder folder;
    SHandMadeCso cso;
    cso.totalBytes = block.size();
    cso.align = 11;
    const auto entry = static_cast<std::uint32_t>(position >> 11U);
    cso.index = {entry | kPlain, entry + 1};
    const SCompressionRequest request = test::ExpansionOf(folder, cso.Encode());
    CNativeFile file;
    EXPECT_TRUE(file.Open(folder / "game.cso", EOpenMode::ReadWrite, ESharing::Anyone));
    EXPECT_TRUE(file.Seek(static_cast<std::int64_t>(position)));
    EXPECT_EQ(file.Write(block), block.size());
    CRecordingOperation operation;
    const std::string text = FailureOf([&] { CsoToIso(request, operation); });
    EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), text == "did not fail" ? block : Bytes());
    return text;
}

TEST(CsoToIso, ReadsBlocksBelowTwoGibibytesOnly) {
    const Bytes block = test::RandomBytes(2048, 6);
    EXPECT_EQ(FailureOfBlockAt((std::uint64_t{1} << 31U) - 2048, block), "did not fail");
    for (const std::uint64_t gibibytes : {2, 3}) {
        EXPECT_EQ(FailureOfBlockAt(gibibytes << 30U, block), "Code 1107-block 0 : read error\n");
    }
}

TEST(CsoToIso, RefusesShiftsOfAnySize) {
    SHandMadeCso cso = test::CsoOf({Bytes(2048, 1)}, 0);
    for (const int align : {31, 32, 63, 64, 255}) {
        cso.align = static_cast<std::uint8_t>(align);
        EXPECT_NE(FailureOfExpanding(cso.Encode()), "did not fail");
    }
}

TEST(CsoToIso, RefusesBlocksOfTheWrongSize) {
    EXPECT_EQ(FailureOfExpanding([] {
                  SHandMadeCso cso = test::CsoOf({Bytes(2000, 1)}, 0);
                  cso.totalBytes = 2048;
                  return cso.Encode();
              }()),
              "Code 1109-block 0 : block size error 2000 != 2048\n");
    EXPECT_EQ(FailureOfExpanding([] {
                  SHandMadeCso cso = test::CsoOf({Bytes(2049, 1)}, 0);
                  cso.totalBytes = 2048;
                  return cso.Encode();
              }()),
              "Code 1108-inflate : error\n");
}

TEST(CsoToIso, RefusesDamagedStreamsWithZlibsMessage) {
    SHandMadeCso cso = test::CsoOf({Bytes(2048, 1)}, 0);
    cso.data[0] = 0xFF;
    EXPECT_EQ(FailureOfExpanding(cso.Encode()), "Code 1108-inflate : invalid block type\n");
    SHandMadeCso empty = test::CsoOf({Bytes(2048, 1)}, 0);
    empty.index[1] = empty.index[0];
    EXPECT_EQ(FailureOfExpanding(empty.Encode()), "Code 1108-inflate : error\n");
}

TEST(CsoToIso, RefusesATruncatedFile) {
    const Bytes whole = test::CsoOf({test::TextLikeBytes(2048, 1), test::TextLikeBytes(2048, 2)}, 0).Encode();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_NE(FailureOfExpanding(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))),
                  "did not fail")
            << length;
    }
}

#ifdef __linux__
TEST(CsoToIso, ReportsAFullDiskWithTheBlock) {
    const CTestFolder folder;
    SCompressionRequest request = test::ExpansionOf(folder, test::CsoOf({Bytes(2048, 1)}, 0).Encode());
    request.outputPath = "/dev/full";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { CsoToIso(request, operation); }), "Code 1110-block 0 : Write error\n");
}
#endif

}  // namespace
}  // namespace vantrel
