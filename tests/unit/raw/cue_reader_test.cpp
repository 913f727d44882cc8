// CUE sheets: what counts as one, commands, quoting, line ends, and the line of every mistake.
#include "raw/cue_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/input_file.h"
#include "files/refused.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

bool IsSheet(std::string_view content) {
    const test::CTestFolder folder;
    test::WriteText(folder / "file", content);
    CInputFile file;
    EXPECT_TRUE(file.Open(folder / "file"));
    return IsCueSheet(file);
}

TEST(CueReader, RecognisesSheetsByTheirFirstCommand) {
    EXPECT_TRUE(IsSheet("FILE \"game.bin\" BINARY\n"));
    EXPECT_TRUE(IsSheet("\xEF\xBB\xBFREM GENRE Game\r\ncatalog 1234567890123\r\n\r\n  file game.bin binary\r\n"));
    EXPECT_FALSE(IsSheet(""));
    EXPECT_FALSE(IsSheet("REM only remarks\n"));
    EXPECT_FALSE(IsSheet("REM a batch file\ncopy FILE other\n"));
    EXPECT_FALSE(IsSheet("FILES\n"));
    EXPECT_FALSE(IsSheet(std::string(100'000, 'x')));
}

TEST(CueReader, ReadsFilesTracksAndIndexes) {
    for (const std::string end : {"\n", "\r\n"}) {
        std::string text =
            "CATALOG 1234567890123\nREM x \"y\nTITLE \"a FILE b\"\n"
            "FILE \"my game.bin\" BINARY\n"
            "  TRACK 01 MODE1/2352\n    FLAGS DCP\n    INDEX 01 00:00:00\n"
            "  TRACK 02 audio\n    PREGAP 00:02:00\n    INDEX 00 01:02:03\n    INDEX 01 01:04:03\n"
            "    INDEX 02 01:05:00\n    POSTGAP 00:02:00\n"
            "file other file.wav WAVE\n"
            "\ttrack\t03\tAUDIO\n    ISRC X\n    INDEX 01 00:00:00";
        for (std::size_t at = 0; end.size() == 2 && (at = text.find('\n', at)) != std::string::npos; at += 2) {
            text.replace(at, 1, end);
        }
        const SCueSheet sheet = ParseCueSheet(text, "game.cue");
        ASSERT_EQ(sheet.files.size(), 2U);
        EXPECT_EQ(sheet.files[0].name, "my game.bin");
        EXPECT_TRUE(sheet.files[0].binary);
        EXPECT_EQ(sheet.files[1].name, "other file.wav");
        EXPECT_FALSE(sheet.files[1].binary);
        ASSERT_EQ(sheet.tracks.size(), 3U);
        EXPECT_EQ(sheet.tracks[0].mode, ETrackMode::Mode1Whole);
        EXPECT_EQ(sheet.tracks[0].line, 5);
        EXPECT_FALSE(sheet.tracks[0].pregap);
        EXPECT_FALSE(sheet.tracks[0].hasPregap);
        EXPECT_EQ(sheet.tracks[1].mode, ETrackMode::Audio);
        EXPECT_TRUE(sheet.tracks[1].hasPregap);
        EXPECT_EQ(sheet.tracks[1].pregap->frame, 62U * 75 + 3);
        EXPECT_EQ(sheet.tracks[1].start->frame, 64U * 75 + 3);
        EXPECT_EQ(sheet.tracks[2].number, 3U);
        EXPECT_EQ(sheet.tracks[2].start->file, 1U);
    }
}

TEST(CueReader, ReadsEveryTrackMode) {
    for (const ETrackMode mode : {ETrackMode::Audio, ETrackMode::Mode1Data, ETrackMode::Mode1Whole,
                                  ETrackMode::Mode2Data, ETrackMode::Mode2WithoutSync, ETrackMode::Mode2Whole}) {
        const std::string text = "FILE a BINARY\nTRACK 1 " + std::string(NameOf(mode)) + "\nINDEX 01 00:00:00\n";
        EXPECT_EQ(ParseCueSheet(text, "a.cue").tracks[0].mode, mode);
    }
}

TEST(CueReader, AnIndex00MayLieInTheFileBefore) {
    const SCueSheet sheet = ParseCueSheet(
        "FILE 1 BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 00 03:00:00\n"
        "FILE 2 BINARY\nINDEX 01 00:00:00\n",
        "a.cue");
    EXPECT_EQ(sheet.tracks[1].pregap->file, 0U);
    EXPECT_EQ(sheet.tracks[1].start->file, 1U);
}

std::string RefusalOf(const std::string& text) {
    try {
        ParseCueSheet(text, "a.cue");
    } catch (const CRefused& refused) {
        return refused.what();
    }
    return "not refused";
}

TEST(CueReader, MistakesAreRefusedWithTheirLine) {
    const std::string begin = "FILE a BINARY\nTRACK 01 MODE1/2352\n";
    const std::pair<std::string, std::string> sheets[] = {
        {"", "0: the sheet has no track"},
        {"FILE \"a\" BINARY\n", "1: the sheet has no track"},
        {"FILE\n", "1: FILE needs a name and a type"},
        {"FILE \"a BINARY\n", "1: FILE needs a name and a type"},
        {"FILE \"a\"\n", "1: FILE needs a name and a type"},
        {"FILE \"\" BINARY\n", "1: FILE needs a name and a type"},
        {"FILE \"a\" BINARY more\n", "1: FILE needs a name and a type"},
        {"FILE a\n", "1: FILE needs a name and a type"},
        {"\nTRACK 01 AUDIO\n", "2: TRACK before the first FILE"},
        {"FILE a BINARY\nTRACK AUDIO\n", "2: TRACK needs a number from 01 to 99 and a mode"},
        {"FILE a BINARY\nTRACK 00 AUDIO\n", "2: TRACK needs a number from 01 to 99 and a mode"},
        {"FILE a BINARY\nTRACK 100 AUDIO\n", "2: TRACK needs a number from 01 to 99 and a mode"},
        {"FILE a BINARY\nTRACK -1 AUDIO\n", "2: TRACK needs a number from 01 to 99 and a mode"},
        {"FILE a BINARY\nTRACK 01\n", "2: unknown track mode \"\""},
        {"FILE a BINARY\nTRACK 01 CDG\n", "2: unknown track mode \"CDG\""},
        {begin + "INDEX 01 00:00:00\nTRACK 01 AUDIO\n", "4: track numbers must ascend"},
        {begin, "2: the track has no INDEX 01"},
        {begin + "INDEX 00 00:00:00\n", "2: the track has no INDEX 01"},
        {begin + "TRACK 02 AUDIO\nINDEX 01 00:00:00\n", "2: the track has no INDEX 01"},
        {"FILE a WAVE\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n", "2: data tracks need a FILE of the type BINARY"},
        {"FILE a BINARY\nINDEX 01 00:00:00\n", "2: the line belongs below a TRACK"},
        {"FILE a BINARY\nPREGAP 00:00:00\n", "2: the line belongs below a TRACK"},
        {begin + "INDEX 01 00:02:00\nINDEX 02 00:01:00\n",
         "4: the position lies before an earlier one of the same file"},
        {begin + "INDEX 01 00:00:00\nINDEX 01 00:01:00\n", "4: the numbers of a track's INDEX lines must ascend"},
        {begin + "PREGAP 2\n", "3: a gap needs a length mm:ss:ff"},
        {begin + "INDEX 01 00:00:00\nFILES b BINARY\n", "4: unknown command FILES"}};
    for (const auto& [text, problem] : sheets) {
        EXPECT_EQ(RefusalOf(text), "a.cue:" + problem) << text;
    }
    for (const std::string index :
         {"", "01", "01 0:00:00", "01 00:60:00", "01 00:00:75", "01 00:00:0x", "x 00:00:00", "100 00:00:00",
          "01 00:00:00 more", "01 00-00-00", "01 00:00.00", "01 00:xx:00", "01 -1:00:00"}) {
        EXPECT_EQ(RefusalOf(begin + "INDEX " + index + "\n"),
                  "a.cue:3: INDEX needs a number from 00 to 99 and a position mm:ss:ff")
            << index;
    }
}

}  // namespace
}  // namespace vantrel
