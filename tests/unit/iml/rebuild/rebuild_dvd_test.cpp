// The DVD rebuild: consecutive files, the trailing sector, sequence of calls and failures.
#include "files/input_file.h"
#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class RebuildDvd : public RebuildTest {
protected:
    RebuildDvd() { m_layout.media = test::ELayoutMedia::Dvd; }

    /// The leading structures without the trailing sector.
    Bytes Start() const { return {m_leading.begin(), m_leading.end() - kSector}; }
    Bytes Trailing() const { return {m_leading.end() - kSector, m_leading.end()}; }
};

TEST_F(RebuildDvd, FilesFollowEachOtherAndTheTrailingSectorEndsTheImage) {
    Add(20, 21, "A.BIN", test::RandomBytes(2043 + 2048, 1));
    Add(22, 22, "B.BIN", {});
    Add(25, 25, "C.BIN", test::RandomBytes(2048, 2));
    m_layout.volumeLast = 30;
    const Bytes image = Rebuilt();
    Bytes expected = Start();
    Put(expected, 20, Padded(test::RandomBytes(2043 + 2048, 1)));
    Put(expected, 22, Padded({}));
    Put(expected, 25, test::RandomBytes(2048, 2));
    Put(expected, 30, Trailing());
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
    EXPECT_EQ(m_operation.PaneText(EPane::Status), "Rebuilding dvd ISO done !");
    EXPECT_EQ(m_operation.CallsOf("complete "), std::vector<std::string>{"complete Rebuilding [dvd] ISO done!"});
}

TEST_F(RebuildDvd, FileOfAnotherLengthShiftsLaterFiles) {
    for (const std::size_t size : {1U, 4096U, 9000U}) {
        m_layout.entries.clear();
        Add(18, 20, "A", test::RandomBytes(size, 1));
        Add(23, 23, "B", test::RandomBytes(10, 2));
        m_layout.volumeLast = 28;
        const Bytes image = Rebuilt();
        Bytes expected = Start();
        const Bytes first = Padded(test::RandomBytes(size, 1));
        Put(expected, 18, first);
        expected.resize(expected.size() + 2 * kSector);
        Put(expected, expected.size() / kSector, Padded(test::RandomBytes(10, 2)));
        expected.resize(expected.size() + (28 - 24) * kSector);
        Put(expected, expected.size() / kSector, Trailing());
        PutVolumeSize(expected);
        EXPECT_EQ(image, expected) << size;
    }
}

TEST_F(RebuildDvd, NoTailGapUnlessTheTrailingSectorLiesBeyondTheFiles) {
    for (const std::uint32_t last : {0U, 18U, 19U}) {
        m_layout.entries.clear();
        Add(18, 18, "A", test::RandomBytes(7, 1));
        m_layout.volumeLast = last;
        const Bytes image = Rebuilt();
        Bytes expected = Start();
        Put(expected, 18, Padded(test::RandomBytes(7, 1)));
        Put(expected, 19, Trailing());
        PutVolumeSize(expected);
        EXPECT_EQ(image, expected);
    }
}

TEST_F(RebuildDvd, NoImageGetsAPostgap) {
    Add(18, 18, "A", test::RandomBytes(7, 1));
    m_layout.volumeLast = 19;
    WriteLayout();
    m_leading.at(0x8400) = 'C';
    test::WriteWhole(m_folder / "game.ims", m_leading);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), 20 * kSector);
}

TEST_F(RebuildDvd, SequenceOfCalls) {
    Add(19, 20, "A.BIN", test::RandomBytes(2049, 1));
    Add(22, 22, "B", {});
    m_layout.volumeLast = 24;
    Rebuilt();
    std::vector<std::string> expected;
    const auto call = [&expected](const std::string& text) { expected.push_back(text); };
    int position = 18;
    const auto block = [&] {
        ++position;
        call("pane PERCENT " + std::to_string(position * 100 / 25) + "%");
        call("done " + std::to_string(position));
        call("yield");
    };
    const auto bytes = [&](std::size_t count) { call("pane BYTES " + std::to_string(count) + " bytes"); };
    call("begin iml2iso");
    call("pane STATUS Rebuilding ISO, please Wait");
    call("begin iml2iso dvd");
    for (int i = 0; i < 2 + 18; ++i) {
        call("yield");
    }
    call("total 25");
    bytes(18 * kSector);
    block();  // the gap before the first file
    call("pane FILE \\..\\A.BIN");
    bytes(18 * kSector + 2049);
    block();
    block();
    block();  // the gap behind it
    bytes(22 * kSector);
    call("pane FILE \\..\\B");
    bytes(18 * kSector + 4096);
    bytes(23 * kSector);
    block();  // the gap before the trailing sector
    block();
    bytes(25 * kSector);
    call("pane STATUS Rebuilding dvd ISO done !");
    call("pane FILE " + (m_folder / "game.iso"));
    call("complete Rebuilding [dvd] ISO done!");
    call("completed");
    EXPECT_EQ(m_operation.Calls(), expected);
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A.BIN", "B", "game.iml", "game.ims", "game.iso"}));
}

TEST_F(RebuildDvd, EntryWithTextBehindItsQuoteCannotBeOpened) {
    Add(18, 18, "A", test::RandomBytes(7, 1));
    m_layout.volumeLast = 19;
    m_layout.count = "4";  // so that the trailing entry counts as a file
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [game.ims\" 3686]");
}

TEST_F(RebuildDvd, BareLineFeedsAreRebuiltAsADvdToo) {
    Add(18, 18, "A", test::RandomBytes(7, 1));
    m_layout.volumeLast = 19;
    m_layout.lineEnd = "\n";
    WriteLayout();
    ASSERT_EQ(test::ReadText(m_folder / "game.iml")[27], 'D');
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), 20 * kSector);
}

TEST_F(RebuildDvd, LeadingFileWithoutATrailingSector) {
    Add(18, 18, "A", test::RandomBytes(7, 1));
    WriteLayout();
    test::WriteWhole(m_folder / "game.ims", Bytes(2040, 7));
    EXPECT_EQ(Failure(InPlace()), "did not fail");
    // A shorter file counts as no leading structures and a trailing sector of zeros.
    Bytes expected;
    Put(expected, 18, Padded(test::RandomBytes(7, 1)));
    Put(expected, 19, Bytes(kSector));
    PutVolumeSize(expected);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso"), expected);
    SRebuildRequest strict = Strict();
    strict.manner = EOutputManner::CommitReplace;
    EXPECT_EQ(Failure(strict), "The file " + (m_folder / "game.ims") + " is shorter than the layout says");
}

TEST_F(RebuildDvd, EveryFailureText) {
    Add(18, 18, "A", test::RandomBytes(7, 1));
    m_layout.volumeLast = 19;
    const std::string iml = m_folder / "game.iml";
    EXPECT_EQ(test::FailureOf([&] { RebuildDvdImage(InPlace(), m_operation); }), "Code 2011 - Error Opening " + iml);
    m_layout.media = test::ELayoutMedia::Cd;
    WriteLayout();
    EXPECT_EQ(test::FailureOf([&] { RebuildDvdImage(InPlace(), m_operation); }),
              "Error dvd !!!!!!!! This is not DVD verson of iml file");
    m_layout.media = test::ELayoutMedia::Dvd;
    WriteLayout();
    ExpectFailuresOfSideFiles();
    RemoveFile(m_folder / "A");
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [" + m_prefix + "A]");
}

TEST_F(RebuildDvd, FilesThatVanishDuringTheRebuild) {
    struct SCase {
        int yield;
        std::string victim;
        std::string text;
        std::string after;
    };
    // 1 yield for the entry, 18 for the leading structures, then one for each block: gap, file, tail.
    const std::vector<SCase> cases = {
        {5, "game.txt", "Code 206 !!! file not found ==> ", ""},
        {5, "game.vlt", "Code 2022 - Error Opening ", ""},
        {5, "game.iso", "Code 2022a - Error Opening ", ""},
        {5, "game.ims", "Code 4000a!!! file not found==> ", ""},
        {20, "game.ims", "Code 3042!!! file not found==> ", ""},
        {22, "game.ims", "Code 3043 - Error!!! Opening [", "]"},
    };
    for (const SCase& one : cases) {
        m_layout.entries.clear();
        Add(19, 19, "A", test::RandomBytes(3, 1));
        m_layout.volumeLast = 22;
        WriteLayout();
        test::CRecordingOperation operation;
        operation.m_onYield = [&, victim = m_folder / one.victim](int yield) {
            if (yield == one.yield) {
                EXPECT_TRUE(RemoveFile(victim));
            }
        };
        EXPECT_EQ(test::FailureOf([&] { RebuildImage(InPlace(), operation); }),
                  one.text + (m_folder / one.victim) + one.after);
    }
}

TEST_F(RebuildDvd, TruncatedLayoutGivesNoImageIfStrict) {
    m_prefix = "";
    Add(18, 18, "A", test::RandomBytes(3, 1));
    Add(19, 19, "B", test::RandomBytes(3, 2));
    m_layout.volumeLast = 25;
    WriteLayout();
    const std::string text = test::ReadText(m_folder / "game.iml");
    const std::size_t trailing = text.find("25       25");
    for (std::size_t length = 0; length < trailing + 29; ++length) {
        test::WriteText(m_folder / "game.iml", text.substr(0, length));
        test::CRecordingOperation operation;
        EXPECT_NE(test::FailureOf([&] { RebuildImage(Strict(), operation); }), "did not fail") << length;
        EXPECT_EQ(FileKindOf(m_folder / "game.iso"), EFileKind::Missing);
        EXPECT_FALSE(test::FailureOf([&] { RebuildImage(InPlace(), operation); }).empty());
        for (const char* name : {"game.iso", "game.txt", "game.vlt"}) {
            RemoveFile(m_folder / name);
        }
    }
}

TEST_F(RebuildDvd, TrailingSectorThatExistsOnNoDisc) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.volumeLast = 99'999'999;
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), (m_folder / "game.ims") + " puts its last sector at a sector that exists on no disc");
}

TEST_F(RebuildDvd, BeyondFourGigabytesWithoutWrapping) {
    m_prefix = "";
    constexpr std::int64_t kFar = 2'500'000;  // 4.8 GiB
    Add(18, 18, "A", test::RandomBytes(2000, 1));
    Add(kFar, kFar + 1, "B", test::RandomBytes(2500, 2));
    m_layout.volumeLast = kFar + 50'000;
    WriteLayout();
    RebuildImage(Strict(), m_operation);
    CInputFile image;
    ASSERT_TRUE(image.Open(m_folder / "game.iso"));
    EXPECT_EQ(image.Size(), (kFar + 50'001) * static_cast<std::int64_t>(kSector));
    const auto at = [&](std::int64_t sector, std::size_t count) {
        Bytes bytes(count * kSector);
        EXPECT_EQ(image.ReadAt(sector * static_cast<std::int64_t>(kSector), bytes), bytes.size());
        return bytes;
    };
    Bytes start = Start();
    const std::uint32_t sectors = kFar + 50'001;
    test::Write32(start, 0x8050, sectors);
    for (std::size_t i = 0; i < 4; ++i) {
        start.at(0x8057 - i) = static_cast<std::uint8_t>(sectors >> (8 * i));
    }
    EXPECT_EQ(at(0, 18), start);
    EXPECT_EQ(at(18, 1), Padded(test::RandomBytes(2000, 1)));
    EXPECT_EQ(at(kFar - 1, 1), Bytes(kSector));
    EXPECT_EQ(at(1'000'000, 1), Bytes(kSector));
    EXPECT_EQ(at(kFar, 2), Padded(test::RandomBytes(2500, 2)));
    EXPECT_EQ(at(kFar + 2, 1), Bytes(kSector));
    EXPECT_EQ(at(kFar + 50'000, 1), Trailing());
}

}  // namespace
}  // namespace vantrel
