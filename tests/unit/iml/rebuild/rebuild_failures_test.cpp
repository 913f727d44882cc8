// The failures of the CD rebuild, each with its text.
#include <filesystem>

#include "tests/support/file_size_limit.h"
#include "tests/support/ordinary_user.h"
#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class RebuildFailures : public RebuildTest {};

TEST_F(RebuildFailures, EveryFailureText) {
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

TEST_F(RebuildFailures, FilesThatVanishDuringTheRebuild) {
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

TEST_F(RebuildFailures, FullDiskEndsTheRebuildAtOnce) {
    Add(18, 18, "A", test::RandomBytes(kSector, 1));
    Add(19, 20, "B", test::RandomBytes(2 * kSector, 2));  // without padding, whose write would fail as well
    Add(21, 21, "C", test::RandomBytes(kSector, 3));
    WriteLayout();
    const test::CFileSizeLimit limit(20 * kSector);
    EXPECT_EQ(Failure(InPlace()).find("Cannot write " + (m_folder / "game.iso") + ": "), 0U);
    EXPECT_EQ(m_operation.PaneText(EPane::File), "\\..\\B");
    EXPECT_EQ(FileSizeOf(m_folder / "game.iso"), 20 * std::int64_t{kSector}) << "what was written stays";
}

TEST_F(RebuildFailures, MissingListedFileNamesItself) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.entries.push_back({19, 19, "nowhere\\B.BIN"});
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [nowhere\\B.BIN]");
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), 19 * kSector);
    EXPECT_EQ(FileKindOf(m_folder / "game.vlt"), EFileKind::File);
}

TEST_F(RebuildFailures, ListedFolderIsRefused) {
    ASSERT_TRUE(MakeFolder(m_folder / "DIR"));
    m_layout.entries.push_back({18, 18, m_prefix + "DIR"});
    WriteLayout();
    EXPECT_EQ(Failure(InPlace()), "Code 3041 - Error!!! Opening [" + m_prefix + "DIR]");
}

TEST_F(RebuildFailures, WriteProtectedLayoutIsRefusedByTheWindowOnly) {
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

TEST_F(RebuildFailures, FileThatShrinksDuringTheRebuild) {
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

}  // namespace
}  // namespace vantrel
