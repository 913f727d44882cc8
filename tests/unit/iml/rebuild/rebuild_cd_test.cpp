// The CD rebuild: placement, padding, gaps, postgap, volume size, sequence of calls and failures.
#include <filesystem>

#include "tests/support/ordinary_user.h"
#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class RebuildCd : public RebuildTest {};

TEST_F(RebuildCd, PlacesPadsAndEndsInAPostgap) {
    Add(20, 21, "A.BIN", test::RandomBytes(2043 + 2048, 1));
    Add(22, 22, "B.BIN", test::RandomBytes(2048, 2));
    Add(26, 26, "C.BIN", {});
    Add(27, 27, "D.BIN", test::RandomBytes(1, 3));
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 20, Padded(test::RandomBytes(2043 + 2048, 1)));
    Put(expected, 22, test::RandomBytes(2048, 2));
    Put(expected, 26, Padded({}));
    Put(expected, 27, Padded(test::RandomBytes(1, 3)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
    EXPECT_EQ((Bytes{image.begin() + 22 * kSector - 5, image.begin() + 22 * kSector}),
              (Bytes{0x0B, 0x02, 0x13, 0x06, 0x01}));
}

TEST_F(RebuildCd, EverySizeInEveryPosition) {
    const std::vector<std::size_t> sizes = {0, 1, 2038, 2043, 2047, 2048, 2049};
    for (std::size_t shift = 0; shift < sizes.size(); ++shift) {
        m_layout.entries.clear();
        std::size_t sector = 18;
        Bytes expected = test::LeadingBytes(m_layout);
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const Bytes content = test::RandomBytes(sizes[(i + shift) % sizes.size()], i);
            const Bytes padded = Padded(content);
            const std::size_t next = sector + padded.size() / kSector;
            Add(static_cast<std::int64_t>(sector), static_cast<std::int64_t>(next) - 1, "F" + std::to_string(i),
                content);
            Put(expected, sector, padded);
            sector = next;
        }
        PutPostgap(expected);
        PutVolumeSize(expected);
        EXPECT_EQ(Rebuilt(), expected) << shift;
    }
}

/// An export names the ".ims" file like the layout, the rebuild like its base name.
TEST_F(RebuildCd, TheLeadingFileThatTheLayoutNames) {
    Add(20, 20, "A.BIN", test::RandomBytes(100, 1));
    WriteLayout();
    const std::string text = test::ReadText(m_folder / "game.iml");
    std::string named = text;
    named.replace(named.find("game.ims"), 8, "slus_200.62.ims");
    test::WriteText(m_folder / "slus_200.62.iml", named);
    test::WriteWhole(m_folder / "slus_200.62.ims", m_leading);
    const SRebuildRequest request = WindowRebuild(m_folder.Path(), "slus_200.62.iml");
    EXPECT_EQ(request.leadingPath, m_folder / "slus_200.62.ims");
    EXPECT_EQ(request.outputPath, m_folder / "slus_200.iso");
    RebuildImage(request, m_operation);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "slus_200.iso"), test::ReadWhole(m_folder / "game.iso"));
    // The base name's file comes first.
    test::WriteWhole(m_folder / "slus_200.ims", m_leading);
    EXPECT_EQ(WindowRebuild(m_folder.Path(), "slus_200.62.iml").leadingPath, m_folder / "slus_200.ims");
    // A name with folders, and one that does not exist, are not followed.
    RemoveFile(m_folder / "slus_200.ims");
    for (const char* other : {"..\\..\\slus_200.62.ims", "slus_999.ims"}) {
        named = text;
        named.replace(named.find("game.ims"), 8, other);
        test::WriteText(m_folder / "slus_200.62.iml", named);
        EXPECT_EQ(WindowRebuild(m_folder.Path(), "slus_200.62.iml").leadingPath, m_folder / "slus_200.ims");
    }
}

TEST_F(RebuildCd, ShortFileLeavesTheNextAtItsSector) {
    Add(18, 22, "SHORT", test::RandomBytes(100, 1));
    Add(23, 23, "NEXT", test::RandomBytes(50, 2));
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 18, Padded(test::RandomBytes(100, 1)));
    Put(expected, 23, Padded(test::RandomBytes(50, 2)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
}

TEST_F(RebuildCd, LongFileIsCutByTheNext) {
    Add(18, 18, "LONG", test::RandomBytes(5000, 1));
    Add(19, 19, "NEXT", test::RandomBytes(50, 2));
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 18, Padded(test::RandomBytes(5000, 1)));
    Put(expected, 19, Padded(test::RandomBytes(50, 2)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
}

TEST_F(RebuildCd, FileAmongTheLeadingStructuresReplacesThem) {
    Add(17, 17, "A", test::RandomBytes(10, 1));
    Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 17, Padded(test::RandomBytes(10, 1)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
}

TEST_F(RebuildCd, FirstSectorWrapsAtFourGigabytes) {
    Add(0x200000 + 19, 0x200000 + 19, "A", test::RandomBytes(10, 1));
    m_layout.entries.insert(m_layout.entries.begin(), {18, 0x200000 + 18, m_prefix + "B"});
    test::WriteWhole(m_folder / "B", test::RandomBytes(2048, 2));
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 18, test::RandomBytes(2048, 2));
    Put(expected, 19, Padded(test::RandomBytes(10, 1)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
}

TEST_F(RebuildCd, OnlyAPlaystationCdGetsAPostgap) {
    m_layout.media = test::ELayoutMedia::Umd;
    Add(18, 18, "A", test::RandomBytes(2000, 1));
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 18, Padded(test::RandomBytes(2000, 1)));
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
    EXPECT_EQ(m_operation.PaneText(EPane::Status), "Rebuilding [cd] ISO done added postgap!");
    EXPECT_EQ(m_operation.CallsOf("complete "),
              std::vector<std::string>{"complete Rebuilding [cd] ISO done added postgap!"});
}

TEST_F(RebuildCd, WithoutTheMarkThereIsNoPostgap) {
    Add(18, 18, "A", test::RandomBytes(2000, 1));
    WriteLayout();
    m_leading.at(0x8400) = 0;
    test::WriteWhole(m_folder / "game.ims", m_leading);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), 19 * kSector);
}

TEST_F(RebuildCd, SequenceOfCalls) {
    Add(19, 20, "A.BIN", test::RandomBytes(2049, 1));
    Add(22, 22, "B", {});
    Rebuilt();
    std::vector<std::string> expected;
    const auto call = [&expected](const std::string& text) { expected.push_back(text); };
    int position = 18;
    const auto block = [&] {
        ++position;
        call("pane PERCENT " + std::to_string(position * 100 / (23 + 150)) + "%");
        call("done " + std::to_string(position));
        call("yield");
    };
    call("begin iml2iso");
    call("pane STATUS Rebuilding ISO, please Wait");
    call("begin iml2iso cd");
    call("yield");
    call("yield");
    for (int i = 0; i < 18; ++i) {
        call("yield");
    }
    call("total 173");
    call("pane BYTES " + std::to_string(18 * kSector) + " bytes");
    block();  // the gap before the first file
    call("pane FILE \\..\\A.BIN");
    call("pane BYTES " + std::to_string(18 * kSector + 2049) + " bytes");
    block();
    block();
    block();  // the gap behind it
    call("pane FILE \\..\\B");
    call("pane BYTES " + std::to_string(18 * kSector + 4096) + " bytes");
    for (int i = 0; i < 150; ++i) {
        block();
    }
    call("pane PERCENT 100%");
    call("pane STATUS Rebuilding [cd] ISO done added postgap!");
    call("pane FILE " + (m_folder / "game.iso"));
    call("complete Rebuilding [cd] ISO done added postgap!");
    call("completed");
    EXPECT_EQ(m_operation.Calls(), expected);
}

TEST_F(RebuildCd, SideFilesExistUntilTheCompletion) {
    Add(18, 19, "A.BIN", test::RandomBytes(3000, 1));
    Add(25, 25, "B", {});
    int seen = 0;
    m_operation.m_onYield = [&](int yield) {
        if (yield == 10) {  // while the leading structures are copied, when both files are complete
            EXPECT_EQ(test::ReadText(m_folder / "game.txt"),
                      "00000012|00000013|" + m_prefix + "A.BIN\r\n00000019|00000019|" + m_prefix + "B\r\n");
            const Bytes bounds = test::ReadWhole(m_folder / "game.vlt");
            ASSERT_EQ(bounds.size(), 24U);
            const std::vector<std::uint32_t> values = {18, 19, 25, 25, 26, 27};
            for (std::size_t i = 0; i < values.size(); ++i) {
                EXPECT_EQ(test::Read32(bounds, 4 * i), values[i]);
            }
            ++seen;
        }
    };
    Rebuilt();
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A.BIN", "B", "game.iml", "game.ims", "game.iso"}));
}

TEST_F(RebuildCd, SideFilesStayIfTheCompletionEndsEarly) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_operation.m_completes = false;
    Rebuilt();
    EXPECT_EQ(m_folder.Names(),
              (std::vector<std::string>{"A", "game.iml", "game.ims", "game.iso", "game.txt", "game.vlt"}));
}

TEST_F(RebuildCd, BaseNameEndsAtTheFirstDotAndAtThirtyCharacters) {
    const SRebuildRequest request = WindowRebuild("C:\\X\\", "game.v1.iml");
    EXPECT_EQ(request.layoutPath, "C:\\X\\game.v1.iml");
    EXPECT_EQ(request.outputPath, "C:\\X\\game.iso");
    EXPECT_EQ(request.leadingPath, "C:\\X\\game.ims");
    EXPECT_EQ(request.sideFiles->entryList, "C:\\X\\game.txt");
    EXPECT_EQ(request.sideFiles->bounds, "C:\\X\\game.vlt");
    EXPECT_EQ(WindowRebuild("F/", "a23456789012345678901234567890xyz").outputPath,
              "F/a23456789012345678901234567890.iso");
    EXPECT_EQ(WindowRebuild("F/", ".iml").sideFiles->bounds, "F/.vlt");
}

TEST_F(RebuildCd, ManyEntriesOfDifferentLengths) {
    std::size_t sector = 18;
    Bytes expected = test::LeadingBytes(m_layout);
    for (std::size_t i = 0; i < 300; ++i, ++sector) {
        Add(static_cast<std::int64_t>(sector), static_cast<std::int64_t>(sector),
            std::string(i % 50 + 1, 'N') + std::to_string(i), test::RandomBytes(i * 7 % 2048 + 1, i));
        Put(expected, sector, Padded(test::RandomBytes(i * 7 % 2048 + 1, i)));
    }
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(Rebuilt(), expected);
}

// ---- layouts that an export would not write

TEST_F(RebuildCd, MissingLineRepeatsThePreviousOne) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    Add(19, 20, "B", test::RandomBytes(2500, 2));
    m_layout.count = "9";
    m_layout.ending = "";
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 18, Padded(test::RandomBytes(3, 1)));
    Put(expected, 19, Padded(test::RandomBytes(2500, 2)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
    EXPECT_EQ(m_operation.CallsOf("pane FILE \\..\\B").size(), 7U);
}

TEST_F(RebuildCd, LineBehindTheEntriesCountsAsAnEntry) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.count = "3";
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [" + m_prefix + "A\"]");
}

TEST_F(RebuildCd, EmptyPathEndsTheList) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.entries.push_back({19, 19, ""});
    m_layout.entries.push_back({20, 20, "never read"});
    const Bytes image = Rebuilt();
    EXPECT_EQ(image.size(), (19 + 150) * kSector);
    EXPECT_EQ(m_operation.CallsOf("pane FILE \\..").size(), 1U);
}

TEST_F(RebuildCd, MissingClosingQuoteCutsTheName) {
    Add(18, 18, "ABC", test::RandomBytes(3, 1));
    WriteLayout();
    std::string text = test::ReadText(m_folder / "game.iml");
    text.erase(text.find("ABC\"") + 3, 1);
    test::WriteText(m_folder / "game.iml", text);
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [" + m_prefix + "AB]");
}

TEST_F(RebuildCd, FilesMayBeListedInAnyOrder) {
    Add(30, 30, "A", test::RandomBytes(5, 1));
    Add(20, 21, "B", test::RandomBytes(2049, 2));
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 30, Padded(test::RandomBytes(5, 1)));
    Put(expected, 20, Padded(test::RandomBytes(2049, 2)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
}

TEST_F(RebuildCd, CountWithoutANumberPlacesNothing) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.count = "none";
    EXPECT_EQ(Rebuilt().size(), (18 + 150) * kSector);
}

TEST_F(RebuildCd, OnlyTenCharactersOfTheCountAreRead) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.count = "00000000029";
    EXPECT_EQ(Rebuilt().size(), (19 + 150) * kSector);
}

TEST_F(RebuildCd, CountBeyondTheFileIsRefused) {
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

TEST_F(RebuildCd, LayoutWithoutAListIsRefused) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    WriteLayout();
    const std::string text = test::ReadText(m_folder / "game.iml");
    for (const std::size_t length : {text.find("#Track"), text.find("#Track") + 20, text.find("# the number") + 10}) {
        test::WriteText(m_folder / "game.iml", text.substr(0, length));
        EXPECT_EQ(Failure(InPlace()), "The layout " + (m_folder / "game.iml") + " has no list of files");
    }
}

TEST_F(RebuildCd, LayoutTruncatedAnywhereGivesAMessageOrAnImage) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    Add(19, 19, "B", test::RandomBytes(3, 2));
    WriteLayout();
    const std::string text = test::ReadText(m_folder / "game.iml");
    const std::size_t whole = text.find("[/LOC]");
    for (std::size_t length = 0; length < text.size(); ++length) {
        test::WriteText(m_folder / "game.iml", text.substr(0, length));
        test::CRecordingOperation window;
        test::CRecordingOperation console;
        const std::string inPlace = test::FailureOf([&] { RebuildImage(InPlace(), window); });
        EXPECT_FALSE(inPlace.empty());
        std::filesystem::remove((m_folder / "game.iso"));
        const std::string strict = test::FailureOf([&] { RebuildImage(Strict(), console); });
        if (length < whole - 2) {
            EXPECT_NE(strict, "did not fail") << length;
            EXPECT_EQ(FileKindOf(m_folder / "game.iso"), EFileKind::Missing);
        }
    }
}

TEST_F(RebuildCd, SectorsThatExistOnNoDiscAreRefused) {
    for (const std::int64_t sector : {std::int64_t{1} << 24, std::int64_t{99'999'999}, std::int64_t{-1}}) {
        m_layout.entries.clear();
        Add(18, sector, "A", test::RandomBytes(3, 1));
        WriteLayout();
        EXPECT_EQ(Failure(InPlace()), "The layout " + (m_folder / "game.iml") + " puts " + m_prefix +
                                          "A at a sector that exists on no disc");
    }
}

// ---- failures, each with its text

TEST_F(RebuildCd, EveryFailureText) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    const std::string iml = m_folder / "game.iml";
    EXPECT_EQ(Failure(InPlace()), "Code 2011 - Error Opening " + iml);
    EXPECT_EQ(test::FailureOf([&] { RebuildCdImage(InPlace(), m_operation); }), "Code 2011a - Error Opening " + iml);
    WriteLayout();
    ExpectFailuresOfSideFiles();
    test::WriteText(m_folder / "game.iml", "[SYS]\r\nVERSION=1.00\r\nMEDIA=XX\r\n");
    EXPECT_EQ(Failure(InPlace()), "Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
    EXPECT_EQ(test::FailureOf([&] { RebuildCdImage(InPlace(), m_operation); }),
              "Error cd!!!!!!!! This is not CD verson of iml file");
}

TEST_F(RebuildCd, FilesThatVanishDuringTheRebuild) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"game.txt", "Code 206 !!! file not found ==> "},
        {"game.vlt", "Code 2022 - Error Opening "},
        {"game.iso", "Code 2022a - Error Opening "},
    };
    for (const auto& [name, text] : cases) {
        m_layout.entries.clear();
        Add(18, 18, "A", test::RandomBytes(3, 1));
        WriteLayout();
        test::CRecordingOperation operation;
        operation.m_onYield = [&, victim = m_folder / name](int yield) {
            if (yield == 5) {
                EXPECT_TRUE(RemoveFile(victim));
            }
        };
        EXPECT_EQ(test::FailureOf([&] { RebuildImage(InPlace(), operation); }), text + (m_folder / name));
    }
}

TEST_F(RebuildCd, MissingListedFileNamesItself) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.entries.push_back({19, 19, "nowhere\\B.BIN"});
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [nowhere\\B.BIN]");
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), 19 * kSector);
    EXPECT_EQ(FileKindOf(m_folder / "game.vlt"), EFileKind::File);
}

TEST_F(RebuildCd, ListedFolderIsRefused) {
    ASSERT_TRUE(MakeFolder(m_folder / "DIR"));
    m_layout.entries.push_back({18, 18, m_prefix + "DIR"});
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [" + m_prefix + "DIR]");
}

// ---- media letters

TEST_F(RebuildCd, CarriageReturnCountsAsACd) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    WriteLayout();
    std::string text = test::ReadText(m_folder / "game.iml");
    text.erase(27, 2);  // "MEDIA=" CR LF
    ASSERT_EQ(text[27], '\r');
    test::WriteText(m_folder / "game.iml", text);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), (19 + 150) * kSector);
}

TEST_F(RebuildCd, BareLineFeedsMoveTheLetter) {
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

TEST_F(RebuildCd, LayoutShorterThanTheLetterIsRefused) {
    test::WriteText(m_folder / "game.iml", "[SYS]\r\nVERSION=1.00\r\nMEDIA=");
    EXPECT_EQ(Failure(InPlace()), "Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
}

TEST_F(RebuildCd, WriteProtectedLayoutIsRefusedByTheWindowOnly) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    const std::string iml = m_folder / "game.iml";
    for (const test::ELayoutMedia media : {test::ELayoutMedia::Cd, test::ELayoutMedia::Umd, test::ELayoutMedia::Dvd}) {
        m_layout.media = media;
        WriteLayout();
        std::filesystem::permissions(iml, std::filesystem::perms{0444});
        {
            const test::CAsOrdinaryUser user(m_folder);
            EXPECT_EQ(Failure(InPlace()), "Code 2012 - Error Opening " + iml);
            SRebuildRequest strict = Strict();
            strict.filesFolder = "";
            strict.outputPath = m_folder / "new.iso";
            EXPECT_EQ(Failure(strict), "did not fail");
        }
        EXPECT_TRUE(RemoveFile(m_folder / "new.iso"));
        EXPECT_TRUE(RemoveFile(iml));
    }
}

// ---- strict rebuilds

TEST_F(RebuildCd, StrictRebuildWritesTheSameImageAndNothingElse) {
    for (const std::size_t size : {0U, 1U, 2048U, 5000U, 300'000U}) {
        m_layout.entries.clear();
        Add(25, 25 + static_cast<std::int64_t>(size / kSector), "A.BIN", test::RandomBytes(size, size));
        test::WriteText(m_folder / "game.txt", "notes of the user");
        m_layout.entries[0].path = "A.BIN";
        WriteLayout();
        RebuildImage(Strict(), m_operation);
        EXPECT_EQ(m_folder.Names(),
                  (std::vector<std::string>{"A.BIN", "game.iml", "game.ims", "game.iso", "game.txt"}));
        EXPECT_EQ(test::ReadText(m_folder / "game.txt"), "notes of the user");
        const Bytes strict = test::ReadWhole(m_folder / "game.iso");
        m_layout.entries[0].path = m_prefix + "A.BIN";
        EXPECT_EQ(Rebuilt(), strict);
        RemoveFile(m_folder / "game.iso");
    }
}

TEST_F(RebuildCd, StrictRebuildLeavesNothingAfterAFailure) {
    m_prefix = "";
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.entries.push_back({19, 19, "B"});
    WriteLayout();
    EXPECT_EQ(Failure(Strict()), "Code 3041 - Error!!! Opening [B]");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A", "game.iml", "game.ims"}));
}

TEST_F(RebuildCd, StrictRebuildRefusesWhatTheWindowAccepts) {
    m_prefix = "";
    Add(18, 18, "A", test::RandomBytes(3, 1));
    const std::string iml = m_folder / "game.iml";
    // The lines of a layout that starts in another way are checked, too.
    const auto failure = [&](const std::string& count) {
        m_layout.count = count;
        WriteLayout();
        test::WriteText(iml, test::ReadText(iml).replace(0, 5, "[sys]"));
        return Failure(Strict());
    };
    for (const char* ending : {"[/LOC]\r\n", ""}) {
        m_layout.ending = ending;
        EXPECT_EQ(failure("3"), iml + ", line 24: the number of entries is 3, but there are 2");
        EXPECT_EQ(failure("1"), iml + ", line 24: the number of entries is 1, but there are 2");
        EXPECT_EQ(failure("x"), iml + ", line 24: the number of entries is 0, but there are 2");
    }
    m_layout.count = "0";
    WriteLayout();
    test::WriteText(iml, test::ReadText(iml).substr(0, test::ReadText(iml).find("0        17 ")));
    EXPECT_EQ(Failure(Strict()), "The layout " + iml + " has no number of entries");
    m_layout.count.reset();
    WriteLayout();
    const std::string text = test::ReadText(iml);
    const auto replaced = [&](const std::string& from, const std::string& to) {
        test::WriteText(iml, std::string(text).replace(text.find(from), from.size(), to));
        return Failure(Strict());
    };
    // Two lines behind a count line that comes too early, as in a damaged track table, there is no entry.
    EXPECT_EQ(replaced("[LOC]\r\n", "[LOC]\r\n# the number of entries: 2\r\n"),
              iml + ", line 26: no entry: the path has to start with a quote in column 28");
    EXPECT_EQ(replaced("0        17 ", "0        -1 "),
              "The layout " + iml + " has no entry of its leading structures");
    WriteLayout();
    m_leading.pop_back();
    test::WriteWhole(m_folder / "game.ims", m_leading);
    EXPECT_EQ(Failure(Strict()), "The file " + (m_folder / "game.ims") + " is shorter than the layout says");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A", "game.iml", "game.ims"}));
}

TEST_F(RebuildCd, StrictRebuildRefusesToReplaceItsInputs) {
    m_prefix = "";
    Add(18, 18, "A", test::RandomBytes(3, 1));
    WriteLayout();
    SRebuildRequest request = Strict();
    request.manner = EOutputManner::CommitReplace;
    request.outputPath = m_folder / "A";
    EXPECT_EQ(Failure(request), "The image would replace " + (m_folder / "A") + ", which the layout lists");
    request.outputPath = m_folder / "game.ims";
    EXPECT_EQ(Failure(request), "The image would replace " + (m_folder / "game.ims"));
    EXPECT_EQ(test::ReadWhole(m_folder / "game.ims"), m_leading);
}

TEST_F(RebuildCd, FileThatShrinksDuringTheRebuild) {
    for (const bool strict : {false, true}) {
        m_layout.entries.clear();
        m_prefix = strict ? "" : m_folder.Path();
        Add(18, 2018, "A", test::RandomBytes(2000 * kSector, 1));
        WriteLayout();
        test::CRecordingOperation operation;
        operation.m_onYield = [&](int yield) {
            // After the first part of "A": the window copies blocks, a strict rebuild a mebibyte at a time.
            if (yield == (strict ? 1 + 1 + 1 : 1 + 18 + 10)) {
                std::filesystem::resize_file(m_folder / "A", 300 * kSector);
            }
        };
        const std::string failure = test::FailureOf([&] { RebuildImage(strict ? Strict() : InPlace(), operation); });
        EXPECT_EQ(failure, strict ? "Cannot read all of A" : "did not fail");
        if (!strict) {
            const Bytes image = test::ReadWhole(m_folder / "game.iso");
            EXPECT_EQ(image.size(), (18 + 2000 + 150) * kSector);
            EXPECT_EQ((Bytes{image.begin() + (18 + 1999) * kSector, image.begin() + (18 + 2000) * kSector}),
                      Bytes(kSector, 0));
            RemoveFile(m_folder / "game.iso");
        }
    }
}

TEST_F(RebuildCd, FindsFilesBelowTheGivenFolderIgnoringCase) {
    ASSERT_TRUE(MakeFolder(m_folder / "files") && MakeFolder(m_folder / "files/Data"));
    test::WriteWhole(m_folder / "files/Data/level1.bin", test::RandomBytes(70, 1));
    test::WriteWhole(m_folder / "files/Data/LEVEL2.BIN", test::RandomBytes(80, 2));
    test::WriteWhole(m_folder / "files/Data/level2.bin", test::RandomBytes(90, 3));
    m_layout.entries = {{18, 18, "DATA\\LEVEL1.BIN"}, {19, 19, "Data\\level2.bin"}, {20, 20, "data/LEVEL2.BIN"}};
    WriteLayout();
    SRebuildRequest request = Strict();
    request.filesFolder = m_folder / "files/";
    RebuildImage(request, m_operation);
    Bytes expected = m_leading;
    Put(expected, 18, Padded(test::RandomBytes(70, 1)));
    Put(expected, 19, Padded(test::RandomBytes(90, 3)));
    Put(expected, 20, Padded(test::RandomBytes(80, 2)));
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso"), expected);
}

}  // namespace
}  // namespace vantrel
