// The tracks of a disc: where they begin and end in the files of a sheet.
#include "raw/raw_disc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/input_file.h"
#include "files/native_file.h"
#include "files/refused.h"
#include "raw/sector.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;
using testing::ElementsAre;
using testing::HasSubstr;

SRawDisc DiscOf(const CTestFolder& folder, const std::string& sheet) {
    test::WriteText(folder / "game.cue", sheet);
    return ReadRawDisc(folder / "game.cue");
}

TEST(RawDisc, AFileWithoutASheetIsOneTrack) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.bin", Bytes(3 * 2352 + 7));
    const SRawDisc disc = ReadRawDisc(folder / "game.bin");
    EXPECT_FALSE(disc.hasSheet);
    ASSERT_EQ(disc.tracks.size(), 1U);
    EXPECT_EQ(disc.DataTrack().sectors, 3);
    EXPECT_EQ(disc.DataTrack().leftOver, 7);
    EXPECT_TRUE(disc.DataTrack().startsDisc);
}

TEST(RawDisc, TracksOfOneFileEndAtTheNextIndex) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.bin", Bytes(100 * 2352));
    const SRawDisc disc = DiscOf(folder,
                                 "FILE \"GAME.BIN\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                                 "TRACK 02 MODE1/2352\nPREGAP 00:02:00\nINDEX 00 00:00:10\nINDEX 01 00:00:20\n"
                                 "TRACK 03 AUDIO\nINDEX 00 00:00:50\nINDEX 01 00:00:60\n"
                                 "TRACK 04 AUDIO\nINDEX 01 00:01:05\n");
    EXPECT_TRUE(disc.hasSheet);
    EXPECT_EQ(disc.dataTrack, 1U);
    std::vector<std::pair<std::int64_t, std::int64_t>> places;
    for (const STrack& track : disc.tracks) {
        places.emplace_back(track.position / 2352, track.sectors);
        EXPECT_EQ(track.leftOver, 0);
    }
    EXPECT_THAT(places, ElementsAre(std::pair(0, 10), std::pair(20, 30), std::pair(60, 20), std::pair(80, 20)));
    EXPECT_FALSE(disc.DataTrack().startsDisc);
    EXPECT_THAT(disc.Files(), ElementsAre(folder / "game.bin"));
}

TEST(RawDisc, OnlyAFirstTrackWithoutGapsStartsTheDisc) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.bin", Bytes(100 * 2352));
    const auto startsDisc = [&](const std::string& lines) {
        return DiscOf(folder, "FILE game.bin BINARY\nTRACK 01 MODE1/2352\n" + lines).DataTrack().startsDisc;
    };
    EXPECT_TRUE(startsDisc("INDEX 01 00:00:00\n"));
    EXPECT_FALSE(startsDisc("PREGAP 00:02:00\nINDEX 01 00:00:00\n"));
    EXPECT_FALSE(startsDisc("INDEX 00 00:00:00\nINDEX 01 00:00:05\n"));
}

TEST(RawDisc, SectorsOfAFileMayHaveDifferentSizes) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.bin", Bytes(10 * 2048 + 20 * 2352 + 5 * 2336 + 1));
    const SRawDisc disc = DiscOf(folder,
                                 "FILE game.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n"
                                 "TRACK 02 AUDIO\nINDEX 00 00:00:10\nINDEX 01 00:00:15\n"
                                 "TRACK 03 MODE2/2336\nINDEX 01 00:00:30\n");
    EXPECT_EQ(disc.tracks[0].sectors, 10);
    EXPECT_EQ(disc.tracks[1].position, 10 * 2048 + 5 * 2352);
    EXPECT_EQ(disc.tracks[1].sectors, 15);
    EXPECT_EQ(disc.tracks[2].position, 10 * 2048 + 20 * 2352);
    EXPECT_EQ(disc.tracks[2].sectors, 5);
    EXPECT_EQ(disc.tracks[2].leftOver, 1);
}

TEST(RawDisc, EachTrackMayHaveItsFile) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game (Track 1).bin", Bytes(30 * 2352));
    test::WriteWhole(folder / "game (track 2).bin", Bytes(40 * 2352));
    const SRawDisc disc = DiscOf(folder,
                                 "FILE \"C:\\rips\\game (Track 1).bin\" BINARY\n  TRACK 01 MODE2/2352\n"
                                 "    INDEX 01 00:00:00\n"
                                 "FILE \"game (Track 2).bin\" BINARY\n  TRACK 02 AUDIO\n    INDEX 00 00:00:00\n"
                                 "    INDEX 01 00:00:30\n"
                                 "FILE \"game (Track 3).bin\" BINARY\n  TRACK 03 AUDIO\n    INDEX 01 00:00:00\n"
                                 "FILE \"game (Track 4).wav\" WAVE\n  TRACK 04 AUDIO\n    INDEX 01 00:00:00\n");
    EXPECT_EQ(disc.tracks[0].sectors, 30);
    EXPECT_TRUE(disc.tracks[0].startsDisc);
    EXPECT_EQ(disc.tracks[1].position, 30 * 2352);
    EXPECT_EQ(disc.tracks[1].sectors, 10);
    EXPECT_EQ(disc.tracks[2].sectors, -1) << "missing";
    EXPECT_EQ(disc.tracks[3].sectors, -1) << "not plain sectors";
    EXPECT_EQ(disc.Files().size(), 4U);
}

TEST(RawDisc, AFileWithoutTracksIsLeftOut) {
    const CTestFolder folder;
    test::WriteWhole(folder / "2", Bytes(5 * 2352));
    const SRawDisc disc = DiscOf(folder, "FILE 1 BINARY\nFILE 2 BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n");
    ASSERT_EQ(disc.tracks.size(), 1U);
    EXPECT_EQ(disc.tracks[0].position, 0);
    EXPECT_EQ(disc.tracks[0].sectors, 5);
}

TEST(RawDisc, AnIndex00InTheFileBeforeEndsItsTrack) {
    const CTestFolder folder;
    test::WriteWhole(folder / "1", Bytes(30 * 2352));
    test::WriteWhole(folder / "2", Bytes(5 * 2352));
    const SRawDisc disc = DiscOf(folder,
                                 "FILE 1 BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\nTRACK 02 AUDIO\n"
                                 "INDEX 00 00:00:20\nFILE 2 BINARY\nINDEX 01 00:00:00\n");
    EXPECT_EQ(disc.tracks[0].sectors, 20);
    EXPECT_EQ(disc.tracks[1].position, 0);
    EXPECT_EQ(disc.tracks[1].sectors, 5);
}

TEST(RawDisc, UnusableSheetsAreRefused) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.bin", Bytes(10 * 2352));
    const auto refusal = [&](const std::string& sheet) {
        try {
            DiscOf(folder, sheet);
        } catch (const CRefused& refused) {
            return std::string(refused.what());
        }
        return std::string("not refused");
    };
    const std::string sheet = folder / "game.cue";
    EXPECT_EQ(refusal("FILE game.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"),
              sheet + ": the sheet has audio tracks only");
    EXPECT_EQ(refusal("FILE missing.bin BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"),
              (folder / "missing.bin") + ": No such file or directory");
    EXPECT_EQ(refusal("FILE game.bin BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:10\n"),
              sheet + ":2: track 1 does not lie within " + (folder / "game.bin"));
    EXPECT_EQ(refusal("FILE game.bin BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\nTRACK 02 AUDIO\n"
                      "INDEX 01 00:00:11\n"),
              sheet + ":2: track 1 does not lie within " + (folder / "game.bin"));
    EXPECT_THAT(refusal("FILE game.bin BINARY\nTRACK 01 AUDIO\nINDEX 1\n"), HasSubstr("game.cue:3: INDEX needs"));
    EXPECT_EQ(refusal("FILE x BINARY\n" + std::string(1 << 20, ' ')), sheet + ": too long for a CUE sheet");
}

/// A sector of each mode as stored.
Bytes StoredSector(ETrackMode mode, std::uint32_t number, const Bytes& data) {
    std::array<std::uint8_t, kRawSectorSize> sector = {};
    const bool isMode1 = mode == ETrackMode::Mode1Data || mode == ETrackMode::Mode1Whole;
    EncodeSector(isMode1 ? ESectorMode::Mode1 : ESectorMode::Mode2Form1, number,
                 std::span<const std::uint8_t, kUserDataSize>(data), sector);
    if (SectorSizeOf(mode) == kUserDataSize) {
        return data;
    }
    return Bytes(sector.end() - static_cast<std::ptrdiff_t>(SectorSizeOf(mode)), sector.end());
}

TEST(Track, EveryModeHoldsTheSameUserData) {
    const Bytes data = test::RandomBytes(kUserDataSize, 1);
    for (const ETrackMode mode : {ETrackMode::Mode1Data, ETrackMode::Mode1Whole, ETrackMode::Mode2Data,
                                  ETrackMode::Mode2WithoutSync, ETrackMode::Mode2Whole}) {
        SCOPED_TRACE(NameOf(mode));
        Bytes stored = StoredSector(mode, 77, data);
        const auto found = UserDataOf(mode, stored);
        EXPECT_EQ(Bytes(found.begin(), found.end()), data);
        EXPECT_FALSE(CheckSector(mode, stored, 77).Any());
        EXPECT_FALSE(CheckUserData(mode, stored).Any());
        EXPECT_EQ(StoredAddress(mode, stored) != nullptr, stored.size() == kRawSectorSize);
        stored[stored.size() - 400] ^= 1;
        EXPECT_EQ(CheckUserData(mode, stored).edc, stored.size() != kUserDataSize);
        EXPECT_EQ(CheckSector(mode, stored, 77).parity, stored.size() != kUserDataSize);
    }
}

TEST(Track, ASyncFieldInUserDataIsNoSubchannel) {
    const CTestFolder folder;
    Bytes data = test::RandomBytes(kUserDataSize, 2);
    const Bytes first = StoredSector(ETrackMode::Mode2Whole, 0, data);
    constexpr std::size_t kWhereSubchannelsWouldEnd = 2448 - kRawSectorSize;
    std::copy_n(first.begin(), 12, data.begin() + kWhereSubchannelsWouldEnd - kForm1DataOffset);
    const Bytes second = StoredSector(ETrackMode::Mode2Whole, 1, data);
    Bytes content = first;
    content.insert(content.end(), second.begin(), second.end());
    STrack track;
    track.path = folder / "file";
    test::WriteWhole(track.path, content);
    CInputFile file;
    ASSERT_TRUE(file.Open(track.path));
    EXPECT_NO_THROW(RequireDataSectors(track, file));
}

TEST(Track, SectorsOfOtherSizesAreNamed) {
    const CTestFolder folder;
    const Bytes sector = StoredSector(ETrackMode::Mode2Whole, 0, test::RandomBytes(kUserDataSize, 1));
    Bytes content = sector;
    content.resize(2448, 1);
    content.insert(content.end(), sector.begin(), sector.end());
    content.resize(2 * 2448, 1);
    for (const auto& [bytes, problem] :
         {std::pair(content, std::string(": its sectors are stored with their subchannels, 2448 bytes each; only "
                                         "sectors of 2352 bytes can be read")),
          std::pair(test::RandomBytes(5000, 1), std::string(": does not begin with a data sector of 2352 bytes")),
          std::pair(Bytes(2351), std::string(": there is no whole sector of 2352 bytes"))}) {
        STrack track;
        track.path = folder / "file";
        test::WriteWhole(track.path, bytes);
        CInputFile file;
        ASSERT_TRUE(file.Open(track.path));
        EXPECT_THAT([&] { RequireDataSectors(track, file); }, testing::ThrowsMessage<CRefused>(track.path + problem));
    }
}

}  // namespace
}  // namespace vantrel
