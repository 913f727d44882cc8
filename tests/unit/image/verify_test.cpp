// Verification and comparison of images, as their runner sees them.
#include "image/inspect/verify.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "files/refused.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using testing::ElementsAre;

constexpr std::size_t kChunk = 1U << 20U;

/// An image of two chunks and a part of a third.
Bytes LargeImage() {
    test::SImageDescription description;
    description.files = {{"A.BIN", test::RandomBytes(2 * kChunk, 1)}};
    return test::BuildImage(description).bytes;
}

TEST(Verify, ReportsBytesDoneAndYieldsForEveryChunk) {
    const CTestFolder folder;
    const Bytes image = LargeImage();
    test::WriteWhole(folder / "game.iso", image);
    CRecordingOperation operation;
    const CReport report = VerifyFile(folder / "game.iso", operation);
    EXPECT_EQ(report["ok"], true);
    EXPECT_EQ(report["image"]["bytes"], image.size());
    const std::string total = std::to_string(image.size());
    EXPECT_THAT(operation.Calls(), ElementsAre("total " + total, "yield", "done 1048576", "yield", "done 2097152",
                                               "yield", "done " + total));
}

TEST(Verify, AnInterruptEndsIt) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.iso", LargeImage());
    CRecordingOperation operation;
    operation.m_onYield = [](int yield) {
        if (yield == 2) {
            throw CRefused("interrupted");
        }
    };
    EXPECT_THAT([&] { VerifyFile(folder / "game.iso", operation); }, testing::ThrowsMessage<CRefused>("interrupted"));
    EXPECT_THAT(operation.CallsOf("done"), ElementsAre("done 1048576"));
}

TEST(Verify, CountsTheFilesOfASheetToo) {
    const CTestFolder folder;
    const Bytes image = LargeImage();
    test::WriteWhole(folder / "game.bin", image);
    test::WriteText(folder / "game.cue", "FILE game.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n");
    CRecordingOperation operation;
    const CReport report = VerifyFile(folder / "game.cue", operation);
    EXPECT_EQ(report["ok"], true);
    EXPECT_EQ(report["image"]["sha1"], report["bins"].As<CReport::List>()[0]["sha1"]);
    EXPECT_THAT(operation.CallsOf("total"), ElementsAre("total " + std::to_string(2 * image.size())));
    operation.m_onYield = [](int) { throw CRefused("interrupted"); };
    EXPECT_THAT([&] { VerifyFile(folder / "game.cue", operation); }, testing::ThrowsMessage<CRefused>("interrupted"));
}

TEST(Verify, ComparesByteForByte) {
    const CTestFolder folder;
    Bytes image = LargeImage();
    test::WriteWhole(folder / "game.iso", image);
    image[kChunk + 5] ^= 1;
    test::WriteWhole(folder / "other.iso", image);
    CRecordingOperation operation;
    EXPECT_EQ(CompareImages(folder / "game.iso", folder / "game.iso", operation)["difference"], nullptr);
    EXPECT_THAT(operation.CallsOf("done"),
                ElementsAre("done 1048576", "done 2097152", "done " + std::to_string(image.size())));
    const CReport report = CompareImages(folder / "game.iso", folder / "other.iso", operation);
    EXPECT_EQ(report["ok"], false);
    EXPECT_EQ(report["difference"],
              (CReport{{"byte", kChunk + 5}, {"bytes", image.size()}, {"bytes_against", image.size()}}));
}

TEST(Verify, AnImageThatBeginsLikeTheOtherDiffersAtItsEnd) {
    const CTestFolder folder;
    Bytes image = LargeImage();
    test::WriteWhole(folder / "game.iso", image);
    image.resize(image.size() - 2048);
    test::WriteWhole(folder / "short.iso", image);
    CRecordingOperation operation;
    for (const auto& [file, other] : {std::pair{"game.iso", "short.iso"}, std::pair{"short.iso", "game.iso"}}) {
        const CReport report = CompareImages(folder / file, folder / other, operation);
        EXPECT_EQ(report["ok"], false);
        EXPECT_EQ(report["difference"]["byte"], image.size());
    }
}

/// An element of a disc database.
std::string RomOf(const char* name, const CReport& sums) {
    return "<rom name=\"" + std::string(name) + "\" size=\"" + std::to_string(sums["bytes"].As<std::int64_t>()) +
           "\" sha1=\"" + sums["sha1"].As<std::string>() + "\"/>";
}

TEST(Verify, ADatabaseMustKnowEveryFileOfASheet) {
    const CTestFolder folder;
    test::WriteWhole(folder / "data.bin", LargeImage());
    test::WriteWhole(folder / "audio.bin", Bytes(20 * 2352, 7));
    test::WriteText(folder / "game.cue",
                    "FILE data.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n"
                    "FILE audio.bin BINARY\nTRACK 02 AUDIO\nINDEX 01 00:00:00\n");
    CRecordingOperation operation;
    const CReport::List bins = VerifyFile(folder / "game.cue", operation)["bins"].As<CReport::List>();
    ASSERT_EQ(bins.size(), 2U);
    test::WriteText(folder / "a.dat", "<datafile><game name=\"A game\">" + RomOf("data.bin", bins[0]) +
                                          RomOf("audio.bin", bins[1]) + "</game></datafile>");
    const CDatFile dat(folder / "a.dat");
    const CReport known = VerifyFile(folder / "game.cue", operation, {&dat, {}});
    EXPECT_EQ(known["ok"], true);
    EXPECT_EQ(known["dat"],
              (CReport{{"file", folder / "a.dat"}, {"status", "verified"}, {"game", "A game"}, {"name", "data.bin"}}));
    std::filesystem::remove(folder / "audio.bin");
    const CReport missing = VerifyFile(folder / "game.cue", operation, {&dat, {}});
    EXPECT_EQ(missing["ok"], false);
    EXPECT_EQ(missing["dat"], (CReport{{"file", folder / "a.dat"}, {"status", "unknown"}}));
    EXPECT_EQ(missing["problems"].As<CReport::List>().back(),
              "no entry of " + (folder / "a.dat") + " has the size and the checksums of " + (folder / "audio.bin"));
}

TEST(Verify, ALayoutIsInNoDatabase) {
    const CTestFolder folder;
    test::WriteText(folder / "game.iml", "[SYS]\r\n");
    test::WriteText(folder / "a.dat", "<datafile/>");
    const CDatFile dat(folder / "a.dat");
    CRecordingOperation operation;
    const std::string path = folder / "game.iml";
    EXPECT_THAT(
        [&] {
            VerifyFile(path, operation, {&dat, {}});
        },
        testing::ThrowsMessage<CRefused>(path + ": a layout has no checksums to look up"));
}

}  // namespace
}  // namespace vantrel
