// Layouts byte for byte, for the three media.
#include "iml/export/layout_writer.h"

#include <gtest/gtest.h>

#include "files/native_file.h"
#include "tests/support/recording_operation.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

constexpr const char* kHeadOfDvd =
    "[SYS]\r\nVERSION=1.00\r\nMEDIA=DVD\r\nTARGET=PS2\r\nDISCVERSION=1.00\r\nDATE=2004/03/09-05:06:07\r\n[/SYS]\r\n\r\n"
    "[CUE]\r\nDISCNAME=\"                                \"\r\nPRODUCER=\"                                \"\r\n"
    "COPYRIGHT=\"                                "
    "\"\r\nCREATIONDATE=20040309\r\nPSTYPE=2\r\nDISCCODE=01\r\n[/CUE]\r\n\r\n"
    "[LOC]\r\n";

constexpr const char* kTracks =
    "#Track   Index   Time        Form        Control        LBN\r\n"
    " 00      00      00:00:00    CDROM2_0    DATA\r\n"
    " 01      00      00:00:00    CDROM2_0    DATA\r\n"
    " 01      00      00:00:00    CDROM2_0    DATA           0\r\n"
    " AA      01      00:00:00    CDROM2_0    DATA           0\r\n";

class LayoutWriterTest : public testing::Test {
protected:
    LayoutWriterTest() {
        m_layout.layoutPath = m_folder / "out.iml";
        m_layout.clock = [] { return LayoutTimeOf({2004, 3, 9, 17, 6, 7}); };
        m_sideFiles = WindowWalkFiles(m_folder.Path(), "game.iso");
        m_layout.sideFiles = m_sideFiles;
        m_layout.leadingSource = m_sideFiles.headerCopy;
        m_image.volumeSectors = 4711;
        SetHeader(25);
        m_image.files = {{0x19, 61, "SYSTEM.CNF"}, {0x1A, 2049, "DATA\\B.BIN"}};
        WriteText(m_sideFiles.pathTableCopy, "table");
        WriteText(m_sideFiles.fileList, "list");
        WriteText(m_sideFiles.offsetList, "offsets");
    }

    void SetHeader(std::uint32_t sectors) {
        m_header = RandomBytes(sectors * std::size_t{2048}, 1);
        WriteWhole(m_sideFiles.headerCopy, m_header);
        m_image.headerSectors = sectors;
    }
    void SetMedia(std::uint8_t id, std::uint8_t sub) {
        m_image.mediaId = id;
        m_image.mediaSub = sub;
    }

    void Write() {
        WriteWhole(m_sideFiles.headerCopy, m_header);  // an earlier layout has deleted it
        WriteImlLayout(m_layout, m_image, m_operation);
    }
    std::string Layout() {
        Write();
        return ReadText(m_layout.layoutPath);
    }
    std::string Entries() {
        const std::string layout = Layout();
        return layout.substr(layout.find("# the number"));
    }

    CTestFolder m_folder;
    CRecordingOperation m_operation;
    SLayoutRequest m_layout;
    SWalkFilePaths m_sideFiles;
    SWalkedImage m_image;
    Bytes m_header;
};

TEST_F(LayoutWriterTest, Cd) {
    SetMedia('L', 'C');
    const std::string layout = Layout();
    EXPECT_EQ(layout,
              "[SYS]\r\nVERSION=1.00\r\nMEDIA=CD\r\nTARGET=PS2\r\nDISCVERSION=1.00\r\nDATE=2004/03/09-05:06:07\r\n"
              "[/SYS]\r\n\r\n[CUE]\r\nDISCNAME=\"                                \"\r\n"
              "PRODUCER=\"                                \"\r\nCOPYRIGHT=\"                                \"\r\n"
              "CREATIONDATE=20040309\r\nPSTYPE=2\r\nDISCCODE=01\r\n" +
                  std::string(kTracks) +
                  "[/CUE]\r\n\r\n[LOC]\r\n# the number of entries: 3\r\n#Start   End      Mode Fno Path\r\n"
                  "0        24       2.1  0   \"out.ims\"\r\n"
                  "25       25       2.1  0   \"SYSTEM.CNF\"\r\n"
                  "26       27       2.1  0   \"DATA\\B.BIN\"\r\n"
                  "[/LOC]\r\n\r\n");
    EXPECT_EQ(layout[27], 'C');
    EXPECT_EQ(ReadWhole(m_folder / "out.ims"), m_header);
}

TEST_F(LayoutWriterTest, Umd) {
    SetMedia('S', 'C');
    const std::string layout = Layout();
    EXPECT_NE(layout.find("\r\nMEDIA=UMD\r\nTARGET=PSP\r\nDISCVERSION"), std::string::npos);
    EXPECT_NE(layout.find("CREATIONDATE=20040309\r\nPSTYPE=PSP\r\nDISCCODE=00\r\n" + std::string(kTracks)),
              std::string::npos);
    EXPECT_NE(layout.find("\r\n#Start   End      Mode Fno Path\r\n0        24       2.1  0   \"out.ims\"\r\n"),
              std::string::npos);
    EXPECT_EQ(layout[27], 'U');
}

TEST_F(LayoutWriterTest, Dvd) {
    SetMedia('L', 0);
    m_image.anchorTag = {2, 0, 2, 0, 9, 8, 7, 6, 5, 4, 3, 1};
    const std::string layout = Layout();
    EXPECT_EQ(layout, kHeadOfDvd + std::string("# the number of entries: 4\r\n#Start   End      Mode Fno Source\r\n"
                                               "0        24       0.0  0   \"out.ims\"\r\n"
                                               "25       25       0.0  0   \"SYSTEM.CNF\"\r\n"
                                               "26       27       0.0  0   \"DATA\\B.BIN\"\r\n"
                                               "4710     4710     0.0  0   \"out.ims\" 51200\r\n"
                                               "[/LOC]\r\n\r\n"));
    EXPECT_EQ(layout[27], 'D');
    Bytes expected = m_header;
    const Bytes tag = {2, 0, 2, 0, 9, 8, 7, 6, 5, 4, 3, 1, 0x66, 0x12, 0, 0};
    expected.insert(expected.end(), tag.begin(), tag.end());
    expected.resize(26U * 2048);
    EXPECT_EQ(ReadWhole(m_folder / "out.ims"), expected);
}

TEST_F(LayoutWriterTest, AnUnknownMediumHasNoLinesThatNameIt) {
    SetMedia('X', 'C');
    const std::string layout = Layout();
    EXPECT_EQ(layout.substr(0, 39), "[SYS]\r\nVERSION=1.00\r\nDISCVERSION=1.00\r\n");
    EXPECT_EQ(layout.find("MEDIA"), std::string::npos);
    EXPECT_EQ(layout.find("TARGET"), std::string::npos);
    EXPECT_EQ(layout.find("PSTYPE"), std::string::npos);
    EXPECT_EQ(layout.find("#Track"), std::string::npos);
    EXPECT_EQ(layout.find("#Start"), std::string::npos);
}

TEST_F(LayoutWriterTest, TheColumnsAreFixed) {
    SetMedia('L', 'C');
    m_image.files = {{123456789, 1, "A"}};
    const std::string entries = Entries();
    const std::string line = entries.substr(entries.find("123456789"), 31);
    EXPECT_EQ(line, "123456789 123456789 2.1  0   \"A");  // wider numbers push the rest on
    m_image.files = {{12345678, 1, "A"}};
    const std::string fits = Entries();
    EXPECT_NE(fits.find("12345678 12345678 2.1  0   \"A\"\r\n"), std::string::npos);
    EXPECT_EQ(fits.substr(fits.find("12345678")).find('"'), 27U);
}

TEST_F(LayoutWriterTest, EmptyPathsAreSkippedAndNotCounted) {
    SetMedia('L', 'C');
    m_image.files = {{0x19, 61, ""}, {0x1A, 1, "A"}, {0x1B, 1, ""}, {0x1C, 1, "DIR\\"}};
    EXPECT_EQ(
        Entries(),
        "# the number of entries: 3\r\n#Start   End      Mode Fno Path\r\n0        24       2.1  0   \"out.ims\"\r\n"
        "26       26       2.1  0   \"A\"\r\n28       28       2.1  0   \"DIR\\\"\r\n[/LOC]\r\n\r\n");
}

TEST_F(LayoutWriterTest, AnImageWithoutFilesHasItsLeadingEntryOnly) {
    SetMedia('S', 'C');
    m_image.files.clear();
    EXPECT_EQ(
        Entries(),
        "# the number of entries: 1\r\n#Start   End      Mode Fno Path\r\n0        24       2.1  0   \"out.ims\"\r\n"
        "[/LOC]\r\n\r\n");
}

TEST_F(LayoutWriterTest, PathsStartWithTheFolderOfTheField) {
    SetMedia('L', 'C');
    m_image.files = {{0x1A, 1, "DATA\\A"}};
    const auto pathWith = [&](const std::string& field) {
        m_layout.folderText = field;
        const std::string entries = Entries();
        const std::size_t start = entries.find("2.1  0   \"", entries.find("out.ims")) + 9;
        return entries.substr(start, entries.find("\r\n", start) - start);
    };
    EXPECT_EQ(pathWith(""), "\"DATA\\A\"");
    EXPECT_EQ(pathWith("C:\\Game_Folder\\"), "\"\\Game_Folder\\DATA\\A\"");
    EXPECT_EQ(pathWith("C:\\Game_Folder"), "\"\\DATA\\A\"") << "the part behind the last separator is not a folder";
    EXPECT_EQ(pathWith("C:\\A\\B C\\"), "\"\\A\\B C\\DATA\\A\"");
    EXPECT_EQ(pathWith("/games/one/"), "\"/games/one/DATA\\A\"");
    EXPECT_EQ(pathWith("C:"), "\"DATA\\A\"");
    EXPECT_EQ(pathWith("folder"), "\"DATA\\A\"");
    EXPECT_EQ(pathWith("/:"), "\"DATA\\A\"") << "what stands before a colon counts as a drive";
}

TEST_F(LayoutWriterTest, TheLeadingFileIsNamedLikeTheLayout) {
    SetMedia('L', 'C');
    m_layout.layoutPath = m_folder / "My.Game.iml";
    EXPECT_NE(Entries().find("\"My.Game.ims\""), std::string::npos);
    EXPECT_EQ(ReadWhole(m_folder / "My.Game.ims"), m_header);
}

TEST_F(LayoutWriterTest, DeletesTheCopiesAndKeepsTheLists) {
    SetMedia('L', 'C');
    Write();
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"game.iso-LBA.TXT", "game.iso.vlt", "out.iml", "out.ims"}));
}

TEST_F(LayoutWriterTest, ReportsEntriesAndCompletes) {
    SetMedia('L', 'C');
    SetHeader(2);
    Write();
    EXPECT_EQ(m_operation.Calls(),
              (std::vector<std::string>{"yield", "yield", "total 3", "pane PERCENT 33%", "done 1", "yield",
                                        "pane PERCENT 66%", "done 2", "yield", "pane PERCENT 100%", "done 3", "yield",
                                        "pane PERCENT 100%", "pane FILE " + m_layout.layoutPath,
                                        "pane STATUS Export iml done!", "complete Export iml done!", "completed"}));
}

TEST_F(LayoutWriterTest, TheLeadingFileEndsWithItsSource) {
    SetMedia('L', 'C');
    m_image.headerSectors = 0xFFFFFFFF;
    Write();
    EXPECT_EQ(ReadWhole(m_folder / "out.ims").size(), m_header.size());
}

TEST_F(LayoutWriterTest, TransactionalFilesAppearTogether) {
    SetMedia('L', 0);
    m_layout.manner = EOutputManner::CommitNew;
    m_layout.sideFiles.reset();
    m_operation.m_onYield = [&](int) {
        EXPECT_EQ(FileKindOf(m_folder / "out.iml"), EFileKind::Missing);
        EXPECT_EQ(FileKindOf(m_folder / "out.ims"), EFileKind::Missing);
    };
    const std::string layout = Layout();
    EXPECT_NE(layout.find("0        24       0.0  0   \"out.ims\"\r\n"), std::string::npos);
    EXPECT_EQ(ReadWhole(m_folder / "out.ims").size(), 26U * 2048);
}

TEST_F(LayoutWriterTest, AFailedLayoutRemovesItsLeadingFile) {
    SetMedia('L', 'C');
    m_layout.manner = EOutputManner::CommitNew;
    m_layout.sideFiles.reset();
    m_operation.m_onYield = [&](int) { WriteText(m_layout.layoutPath, "someone else's"); };
    EXPECT_NE(FailureOf([&] { Write(); }), "did not fail");
    EXPECT_EQ(ReadText(m_layout.layoutPath), "someone else's");
    EXPECT_EQ(FileKindOf(m_folder / "out.ims"), EFileKind::Missing);
}

// --- failures -----------------------------------------------------------------------------------------------------

TEST_F(LayoutWriterTest, EveryFileThatCannotBeOpenedHasItsCode) {
    SetMedia('L', 'C');
    const auto failureWithout = [&](const std::string& path) {
        const Bytes content = ReadWhole(path);
        RemoveFile(path);
        const std::string failure = FailureOf([&] { WriteImlLayout(m_layout, m_image, m_operation); });
        WriteWhole(path, content);
        return failure;
    };
    EXPECT_EQ(failureWithout(m_sideFiles.fileList), "Code 4100 - Error Opening " + m_sideFiles.fileList);
    EXPECT_EQ(failureWithout(m_sideFiles.offsetList), "Code 4103 - Error Opening " + m_sideFiles.offsetList);
    EXPECT_EQ(failureWithout(m_sideFiles.headerCopy), "Code 4101a - Error Opening " + m_sideFiles.headerCopy);
}

TEST_F(LayoutWriterTest, EveryFileThatCannotBeCreatedHasItsCode) {
    SetMedia('L', 'C');
    ASSERT_TRUE(MakeFolder(m_layout.layoutPath));
    EXPECT_EQ(FailureOf([&] { Write(); }), "Code 4104 - Error Opening " + m_layout.layoutPath);
    RemoveFile(m_folder / "out.ims");
    ASSERT_TRUE(MakeFolder(m_folder / "out.ims"));
    EXPECT_EQ(FailureOf([&] { Write(); }), "Code 4101 - Error Opening " + (m_folder / "out.ims"));
}

TEST_F(LayoutWriterTest, ALeadingFileThatVanishesHasItsCode) {
    SetMedia('L', 'C');
    m_operation.m_onYield = [&](int) { RemoveFile(m_folder / "out.ims"); };
    EXPECT_EQ(FailureOf([&] { Write(); }), "Code 4102 - Error Opening " + (m_folder / "out.ims"));
}

}  // namespace
}  // namespace vantrel::test
