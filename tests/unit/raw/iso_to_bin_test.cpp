// The conversion to a raw image without a second program: bytes, both outputs or none, refusals.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "raw/iso_to_bin.h"
#include "raw/raw_sector.h"
#include "tests/support/raw_sector_check.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/raw/raw_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;
using testing::ElementsAre;

SDirectIsoToBinRequest RequestFor(const CTestFolder& folder, const Bytes& image) {
    test::WriteWhole(folder / "game.iso", image);
    return {folder / "game.iso", folder / "game.bin", folder / "game.cue", EOutputManner::CommitReplace};
}

TEST(IsoToBinDirectly, WritesSectorsAndSheet) {
    for (const test::EPostgap postgap : {test::EPostgap::None, test::EPostgap::Missing}) {
        const CTestFolder folder;
        const Bytes image = test::CdImage(postgap);
        CRecordingOperation operation;
        IsoToBinDirectly(RequestFor(folder, image), operation);
        const Bytes raw = test::ReadWhole(folder / "game.bin");
        const std::size_t added = postgap == test::EPostgap::Missing ? 150 : 0;
        EXPECT_EQ(raw.size(), (image.size() / 2048 + added) * 2352);
        EXPECT_EQ(test::FaultOfRawImage(raw), "");
        EXPECT_EQ(test::ReadText(folder / "game.cue"),
                  "FILE \"game.bin\" BINARY\r\n  TRACK 01 MODE2/2352\r\n    INDEX 01 00:00:00\r\n");
        EXPECT_THAT(folder.Names(), ElementsAre("game.bin", "game.cue", "game.iso"));
        EXPECT_EQ(operation.Calls().back(), "completed");
        EXPECT_EQ(operation.PaneText(EPane::Bytes), std::to_string(raw.size()) + " bytes");
    }
}

TEST(IsoToBinDirectly, AnImageOfPartialSectorsIsRefused) {
    const CTestFolder folder;
    Bytes image = test::CdImage();
    image.push_back(0);
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToBinDirectly(RequestFor(folder, image), operation); }),
              (folder / "game.iso") + " is not whole sectors of 2048 bytes: 1 bytes are left over");
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(IsoToBinDirectly, AnImageBeyondTheLastAddressIsRefused) {
    const CTestFolder folder;
    const SDirectIsoToBinRequest request = RequestFor(folder, test::CdImage());
    CNativeFile file;
    ASSERT_TRUE(file.Open(folder / "game.iso", EOpenMode::ReadWrite, ESharing::Anyone));
    ASSERT_TRUE(file.Resize((std::int64_t{kMostRawSectors} - 149) * 2048));
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToBinDirectly(request, operation); }),
              (folder / "game.iso") + " is too long for a CD: addresses end at 99:59:74, after 449850 sectors");
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(IsoToBinDirectly, NamesThatASheetCannotSpellAreRefused) {
    const CTestFolder folder;
    SDirectIsoToBinRequest request = RequestFor(folder, test::CdImage());
    request.binPath = folder / "a\"b.bin";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToBinDirectly(request, operation); }),
              "A CUE sheet cannot name the file " + request.binPath);
}

TEST(IsoToBinDirectly, WhenTheSheetCannotBeNeitherIs) {
    const CTestFolder folder;
    const SDirectIsoToBinRequest request = RequestFor(folder, test::CdImage());
    test::WriteText(folder / "game.bin", "older");
    ASSERT_TRUE(MakeFolder(folder / "game.cue"));
    CRecordingOperation operation;
    EXPECT_THAT(FailureOf([&] { IsoToBinDirectly(request, operation); }), testing::HasSubstr(folder / "game.cue"));
    EXPECT_THAT(folder.Names(), ElementsAre("game.bin", "game.cue", "game.iso"));
    EXPECT_EQ(test::ReadText(folder / "game.bin"), "older");
}

TEST(IsoToBinDirectly, AnImageThatShrinksLeavesNothing) {
    const CTestFolder folder;
    Bytes image = test::CdImage();
    image.resize(std::size_t{2048} * 4096);
    const SDirectIsoToBinRequest request = RequestFor(folder, image);
    CRecordingOperation operation;
    operation.m_onPump = [&](int) { test::WriteWhole(folder / "game.iso", Bytes(5, 1)); };
    EXPECT_EQ(FailureOf([&] { IsoToBinDirectly(request, operation); }), "Cannot read " + (folder / "game.iso"));
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(IsoToBinDirectly, AnInterruptionLeavesNothing) {
    const CTestFolder folder;
    Bytes image = test::CdImage();
    image.resize(std::size_t{2048} * 4096);
    const SDirectIsoToBinRequest request = RequestFor(folder, image);
    CRecordingOperation operation;
    operation.m_onPump = [](int) { throw std::runtime_error("interrupted"); };
    EXPECT_THROW(IsoToBinDirectly(request, operation), std::runtime_error);
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(CuePathOf, IsBesideTheRawImageAndNeverTheImageItself) {
    EXPECT_EQ(CuePathOf("a/b.c.bin"), "a/b.c.cue");
    EXPECT_EQ(CuePathOf("a/b"), "a/b.cue");
    EXPECT_EQ(CuePathOf("a/b.CUE"), "a/b.CUE.cue");
}

}  // namespace
}  // namespace vantrel
