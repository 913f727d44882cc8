// The CD rebuild of layouts that an export would not write: counts, lines, line ends and media letters.
#include <filesystem>

#include "tests/support/file_size_limit.h"
#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class OddLayout : public RebuildTest {};

TEST_F(OddLayout, MissingLineRepeatsThePreviousOne) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    Add(19, 20, "B", test::RandomBytes(2500, 2));
    m_layout.count = "9";
    m_layout.ending = "";
    const Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{18, test::RandomBytes(3, 1)}, {19, test::RandomBytes(2500, 2)}}));
    EXPECT_EQ(m_operation.CallsOf("pane FILE \\..\\B").size(), 7U);
}

TEST_F(OddLayout, LineBehindTheEntriesCountsAsAnEntry) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.count = "3";
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [" + m_prefix + "A\"]");
}

TEST_F(OddLayout, EmptyPathEndsTheList) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.entries.push_back({19, 19, ""});
    m_layout.entries.push_back({20, 20, "never read"});
    const Bytes image = Rebuilt();
    EXPECT_EQ(image.size(), (19 + 150) * kSector);
    EXPECT_EQ(m_operation.CallsOf("pane FILE \\..").size(), 1U);
}

TEST_F(OddLayout, MissingClosingQuoteCutsTheName) {
    Add(18, 18, "ABC", test::RandomBytes(3, 1));
    WriteLayout();
    std::string text = test::ReadText(m_folder / "game.iml");
    text.erase(text.find("ABC\"") + 3, 1);
    test::WriteText(m_folder / "game.iml", text);
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [" + m_prefix + "AB]");
}

TEST_F(OddLayout, FilesMayBeListedInAnyOrder) {
    Add(30, 30, "A", test::RandomBytes(5, 1));
    Add(20, 21, "B", test::RandomBytes(2049, 2));
    const Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{30, test::RandomBytes(5, 1)}, {20, test::RandomBytes(2049, 2)}}));
}

TEST_F(OddLayout, CountWithoutANumberPlacesNothing) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.count = "none";
    EXPECT_EQ(Rebuilt().size(), (18 + 150) * kSector);
}

TEST_F(OddLayout, OnlyTenCharactersOfTheCountAreRead) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.count = "00000000029";
    EXPECT_EQ(Rebuilt().size(), (19 + 150) * kSector);
}

TEST_F(OddLayout, CountBeyondTheFileIsRefused) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    for (const char* count : {"100000", "2147483647"}) {
        m_layout.count = count;
        WriteLayout();
        EXPECT_EQ(Failure(InPlace()),
                  "The number of entries in the layout " + (m_folder / "game.iml") + " is larger than the file");
        EXPECT_EQ(Failure(Strict()),
                  (m_folder / "game.iml") + ", line 24: the number of entries is " + count + ", but there are 2");
    }
}

TEST_F(OddLayout, LayoutWithoutAListIsRefused) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    WriteLayout();
    const std::string text = test::ReadText(m_folder / "game.iml");
    for (const std::size_t length : {text.find("#Track"), text.find("#Track") + 20, text.find("# the number") + 10}) {
        test::WriteText(m_folder / "game.iml", text.substr(0, length));
        EXPECT_EQ(Failure(InPlace()), "The layout " + (m_folder / "game.iml") + " has no list of files");
    }
}

TEST_F(OddLayout, LayoutTruncatedAnywhereGivesAMessageOrAnImage) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    Add(19, 19, "B", test::RandomBytes(3, 2));
    WriteLayout();
    const std::string text = test::ReadText(m_folder / "game.iml");
    const std::size_t whole = text.find("[/LOC]");
    const Bytes withNone = CdWith({});
    const Bytes withA = CdWith({{18, test::RandomBytes(3, 1)}});
    const Bytes withBoth = CdWith({{18, test::RandomBytes(3, 1)}, {19, test::RandomBytes(3, 2)}});
    const std::string noMedia = "Error!!!!!!!! This is not UMD or CD or DVD verson of iml file";
    const std::string noList = "The layout " + (m_folder / "game.iml") + " has no list of files";
    for (std::size_t length = 0; length < text.size(); ++length) {
        test::WriteText(m_folder / "game.iml", text.substr(0, length));
        test::CRecordingOperation window;
        test::CRecordingOperation console;
        const std::string inPlace = test::FailureOf([&] { RebuildImage(InPlace(), window); });
        if (inPlace == "did not fail") {
            EXPECT_THAT(test::ReadWhole(m_folder / "game.iso"), testing::AnyOf(withNone, withA, withBoth)) << length;
        } else if (!inPlace.starts_with("Code 3041 - Error!!! Opening [")) {
            EXPECT_THAT(inPlace, testing::AnyOf(noMedia, noList)) << length;
            EXPECT_EQ(FileKindOf(m_folder / "game.iso"), EFileKind::Missing);
        }
        std::filesystem::remove((m_folder / "game.iso"));
        const std::string strict = test::FailureOf([&] { RebuildImage(Strict(), console); });
        if (length >= whole) {
            EXPECT_EQ(inPlace, "did not fail") << length;
        }
        if (length < whole - 2) {
            EXPECT_NE(strict, "did not fail") << length;
            EXPECT_EQ(FileKindOf(m_folder / "game.iso"), EFileKind::Missing);
        }
    }
}

TEST_F(OddLayout, SectorsThatExistOnNoDiscAreRefused) {
    for (const std::int64_t sector : {std::int64_t{1} << 24, std::int64_t{99'999'999}, std::int64_t{-1}}) {
        m_layout.entries.clear();
        Add(18, sector, "A", test::RandomBytes(3, 1));
        WriteLayout();
        EXPECT_EQ(Failure(InPlace()), "The layout " + (m_folder / "game.iml") + " puts " + m_prefix +
                                          "A at a sector that exists on no disc");
    }
}

/// Without files, only the entry of the leading structures says where they would begin.
TEST_F(OddLayout, LeadingStructuresThatEndOnNoDiscMoveNothing) {
    const test::CFileSizeLimit limit(1U << 20U);  // no gap up to the end of a disc
    for (const char* last : {"99999999", "16777216", "-2", "-1"}) {
        WriteLayout();
        std::string text = test::ReadText(m_folder / "game.iml");
        const std::size_t entry = text.find("0        17 ");
        ASSERT_NE(entry, std::string::npos);
        text.replace(entry + 9, 8, std::string(last).append(8 - std::string(last).size(), ' '));
        test::WriteText(m_folder / "game.iml", text);
        m_operation = {};
        RebuildImage(InPlace(), m_operation);
        EXPECT_EQ(FileSizeOf(m_folder / "game.iso"), std::int64_t{(18 + 150) * kSector}) << last;
        EXPECT_EQ(m_operation.CallsOf("total").size(), 1U);
    }
}

TEST_F(OddLayout, CarriageReturnCountsAsACd) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    WriteLayout();
    std::string text = test::ReadText(m_folder / "game.iml");
    text.erase(27, 2);  // "MEDIA=" CR LF
    ASSERT_EQ(text[27], '\r');
    test::WriteText(m_folder / "game.iml", text);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), (19 + 150) * kSector);
}

TEST_F(OddLayout, BareLineFeedsMoveTheLetter) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.lineEnd = "\n";
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
    m_layout.media = test::ELayoutMedia::Umd;
    WriteLayout();
    // The letter is now the 'D' of "UMD", so this layout is rebuilt as a DVD without files: the first '#' is that of
    // the track table, which has no count.
    ASSERT_EQ(test::ReadText(m_folder / "game.iml")[27], 'D');
    m_leading.resize(m_leading.size() - kSector);
    Bytes trailing(kSector, 3);
    test::Write32(trailing, 12, 17);
    m_leading.insert(m_leading.end(), trailing.begin(), trailing.end());
    test::WriteWhole(m_folder / "game.ims", m_leading);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), (1 + 17 + 16) * kSector);
}

TEST_F(OddLayout, LayoutShorterThanTheLetterIsRefused) {
    test::WriteText(m_folder / "game.iml", "[SYS]\r\nVERSION=1.00\r\nMEDIA=");
    EXPECT_EQ(Failure(InPlace()), "Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
}

}  // namespace
}  // namespace vantrel
