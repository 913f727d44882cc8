// Conversion of CD images to raw images: contents, both outputs or none, refused images.
#include "raw/iso_to_bin.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "iso/iso9660.h"
#include "raw/raw_sector.h"
#include "tests/support/memory_source.h"
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

SIsoToBinRequest RequestFor(const CTestFolder& folder, const Bytes& image) {
    test::WriteWhole(folder / "game.iso", image);
    return {folder / "game.iso", folder / "game.bin", folder / "game.cue", EOutputManner::CommitReplace};
}

TEST(IsoToBin, WritesSectorsAndSheet) {
    for (const test::EPostgap postgap : {test::EPostgap::None, test::EPostgap::Missing}) {
        const CTestFolder folder;
        const Bytes image = test::CdImage(postgap);
        test::WriteWhole(folder / "game.bin", Bytes(1'000'000, 'o'));
        test::WriteWhole(folder / "game.cue", Bytes(1'000, 'o'));
        CRecordingOperation operation;
        IsoToBin(RequestFor(folder, image), operation);
        const Bytes raw = test::ReadWhole(folder / "game.bin");
        const std::size_t added = postgap == test::EPostgap::Missing ? 150 : 0;
        EXPECT_EQ(raw.size(), (image.size() / 2048 + added) * 2352);
        EXPECT_EQ(test::FaultOfRawImage(raw), "");
        EXPECT_EQ(test::ReadText(folder / "game.cue"),
                  "FILE \"game.bin\" BINARY\r\n  TRACK 01 MODE2/2352\r\n    INDEX 01 00:00:00\r\n");
        EXPECT_THAT(folder.Names(), ElementsAre("game.bin", "game.cue", "game.iso"));
        EXPECT_EQ(operation.Calls().front(), "begin iso2bin");
        EXPECT_EQ(operation.CallsOf("total"), std::vector{"total " + std::to_string(raw.size() / 2352)});
        EXPECT_EQ(operation.CallsOf("done").back(), "done " + std::to_string(raw.size() / 2352));
        EXPECT_EQ(operation.Calls().back(), "completed");
        EXPECT_EQ(operation.PaneText(EPane::Bytes), std::to_string(raw.size()) + " bytes");
    }
}

TEST(IsoToBin, RefusesAnImageWithAPartialSector) {
    const CTestFolder folder;
    Bytes image = test::CdImage();
    image.push_back(0);
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToBin(RequestFor(folder, image), operation); }),
              (folder / "game.iso") + " is not whole sectors of 2048 bytes: 1 bytes are left over");
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(IsoToBin, RefusesAnImageBeyondTheLastAddress) {
    const CTestFolder folder;
    Bytes image = test::CdImage();
    test::Write32(image, kVolumeSizePosition, kMostRawSectors + 1);  // the postgap has no address
    const SIsoToBinRequest request = RequestFor(folder, image);
    CNativeFile file;
    ASSERT_TRUE(file.Open(folder / "game.iso", EOpenMode::ReadWrite, ESharing::Anyone));
    ASSERT_TRUE(file.Resize((std::int64_t{kMostRawSectors} - 149) * 2048));
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToBin(request, operation); }),
              (folder / "game.iso") + " is too long for a CD: addresses end at 99:59:74, after 449850 sectors");
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(IsoToBin, RefusesNamesThatASheetCannotExpress) {
    const CTestFolder folder;
    SIsoToBinRequest request = RequestFor(folder, test::CdImage());
    request.binPath = folder / "a\"b.bin";
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { IsoToBin(request, operation); }), "A CUE sheet cannot name the file " + request.binPath);
}

TEST(IsoToBin, WritesNothingIfTheSheetCannotBeCreated) {
    const CTestFolder folder;
    const SIsoToBinRequest request = RequestFor(folder, test::CdImage());
    test::WriteText(folder / "game.bin", "older");
    ASSERT_TRUE(MakeFolder(folder / "game.cue"));
    CRecordingOperation operation;
    EXPECT_THAT(FailureOf([&] { IsoToBin(request, operation); }), testing::HasSubstr(folder / "game.cue"));
    EXPECT_THAT(folder.Names(), ElementsAre("game.bin", "game.cue", "game.iso"));
    EXPECT_EQ(test::ReadText(folder / "game.bin"), "older");
}

TEST(IsoToBin, ReportsThatThereIsNoMemoryToReadAContainer) {
    const CTestFolder folder;
    test::CSourceWithoutMemory image(test::CdImage());
    SIsoToBinRequest request = {folder / "game.cso", folder / "game.bin", folder / "game.cue"};
    request.image = &image;
    CRecordingOperation operation;
    EXPECT_THAT(FailureOf([&] { IsoToBin(request, operation); }),
                testing::HasSubstr("not enough memory to read the image"));
    EXPECT_THAT(folder.Names(), testing::IsEmpty());
}

TEST(IsoToBin, LeavesNothingIfTheImageShrinks) {
    const CTestFolder folder;
    Bytes image = test::CdImage();
    image.resize(std::size_t{2048} * 4096);
    const SIsoToBinRequest request = RequestFor(folder, image);
    CRecordingOperation operation;
    operation.m_onYield = [&](int) { test::WriteWhole(folder / "game.iso", Bytes(5, 1)); };
    EXPECT_EQ(FailureOf([&] { IsoToBin(request, operation); }),
              "Cannot read " + (folder / "game.iso") + ": unexpected end of file");
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(IsoToBin, LeavesNothingIfInterrupted) {
    const CTestFolder folder;
    Bytes image = test::CdImage();
    image.resize(std::size_t{2048} * 4096);
    const SIsoToBinRequest request = RequestFor(folder, image);
    CRecordingOperation operation;
    operation.m_onYield = [](int) { throw std::runtime_error("interrupted"); };
    EXPECT_THROW(IsoToBin(request, operation), std::runtime_error);
    EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
}

TEST(CuePathOf, ReplacesTheExtensionUnlessThatIsTheSheetsOwn) {
    EXPECT_EQ(CuePathOf("a/b.c.bin"), "a/b.c.cue");
    EXPECT_EQ(CuePathOf("a/b"), "a/b.cue");
    EXPECT_EQ(CuePathOf("a/b.CUE"), "a/b.CUE.cue");
}

}  // namespace
}  // namespace vantrel
