// Walks through images of the builder: the result and the four side files, compared with the builder's record.
#include "iml/export/walker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "files/native_file.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel::test {
namespace {

class WalkerTest : public testing::Test {
protected:
    SWalkedImage Walk(const Bytes& bytes) {
        WriteWhole(m_folder / "game.iso", bytes);
        return WalkIsoImage(WindowWalk(), m_operation);
    }
    SWalkRequest WindowWalk() const { return {m_folder / "game.iso", WindowWalkFiles(m_folder.Path(), "game.iso")}; }
    SWalkedImage Walk(const SImageDescription& description) {
        m_image = BuildImage(description);
        return Walk(m_image.bytes);
    }
    std::string List() const { return ReadText(m_folder / "game.iso-LBA.TXT"); }
    Bytes Header() const { return ReadWhole(m_folder / "temp1.tmp"); }
    Bytes Offsets() const { return ReadWhole(m_folder / "game.iso.vlt"); }

    static std::string ExpectedList(const SBuiltImage& image) {
        std::string list;
        for (const SBuiltFile& file : image.files) {
            char numbers[64];
            std::snprintf(numbers, sizeof(numbers), "%08X|%08X|%08X|", file.sector,
                          static_cast<unsigned>(file.content.size()),
                          static_cast<unsigned>((file.content.size() + 2047) / 2048));
            list += numbers + file.path + "\r\n";
        }
        return list;
    }

    void ExpectSideFiles() {
        EXPECT_EQ(List(), ExpectedList(m_image));
        const auto end = m_image.bytes.begin() + static_cast<std::ptrdiff_t>(std::size_t{m_image.headerEnd} * 2048);
        EXPECT_EQ(Header(), Bytes(m_image.bytes.begin(), end));
        const Bytes offsets = Offsets();
        ASSERT_EQ(offsets.size(), 4 + 8 * m_image.files.size());
        EXPECT_EQ(Read32(offsets, 0), m_image.headerEnd);
        for (std::size_t i = 0; i < m_image.files.size(); ++i) {
            const SBuiltFile& file = m_image.files[i];
            const auto sectors = static_cast<std::uint32_t>((file.content.size() + 2047) / 2048);
            EXPECT_EQ(Read32(offsets, 4 + 8 * i), file.sector);
            EXPECT_EQ(Read32(offsets, 8 + 8 * i), file.sector + std::max(sectors, 1U) - 1);
        }
    }

    CTestFolder m_folder;
    CRecordingOperation m_operation;
    SBuiltImage m_image;
};

TEST_F(WalkerTest, ListsAHandmadeTree) {
    SImageDescription description;
    description.files = {{"SYSTEM.CNF", Bytes(61, 'a')},
                         {"DATA/SUB/B.BIN", Bytes(2049, 'b')},
                         {"DATA/A.BIN", Bytes(2048, 'c')},
                         {"EMPTY.DAT", {}}};
    const SWalkedImage walked = Walk(description);
    // 18 to 21 path tables, 22 root, 23 DATA, 24 SUB, 25 the first file
    EXPECT_EQ(List(),
              "00000019|0000003D|00000001|\\SYSTEM.CNF\r\n"
              "0000001A|00000801|00000002|\\DATA\\SUB\\B.BIN\r\n"
              "0000001C|00000800|00000001|\\DATA\\A.BIN\r\n"
              "0000001D|00000000|00000000|\\EMPTY.DAT\r\n");
    EXPECT_EQ(Offsets(), (Bytes{25, 0, 0,  0, 25, 0, 0,  0, 25, 0, 0,  0, 26, 0, 0,  0, 27, 0,
                                0,  0, 28, 0, 0,  0, 28, 0, 0,  0, 29, 0, 0,  0, 29, 0, 0,  0}));
    EXPECT_EQ(Header().size(), 25U * 2048);
    EXPECT_EQ(walked.mediaId, 'L');
    EXPECT_EQ(walked.mediaSub, 'C');
    EXPECT_EQ(walked.volumeSectors, 30U);
    EXPECT_EQ(m_folder.Names(),
              (std::vector<std::string>{"game.iso", "game.iso-LBA.TXT", "game.iso.vlt", "temp1.tmp", "tmp.tmp"}));
}

struct SKindCase {
    EImageKind kind;
    std::size_t files;
    std::size_t folders;
    bool optionalPathTables;
    bool xaAttributes;
};

class WalkerKindTest : public WalkerTest, public testing::WithParamInterface<SKindCase> {};

TEST_P(WalkerKindTest, FindsWhatTheBuilderWrote) {
    SImageDescription description;
    description.kind = GetParam().kind;
    description.files = ManyFiles(GetParam().files, GetParam().folders, 11);
    description.files.back().holeBefore = 7;
    description.optionalPathTables = GetParam().optionalPathTables;
    description.xaAttributes = GetParam().xaAttributes;
    Walk(description);
    ExpectSideFiles();
}

INSTANTIATE_TEST_SUITE_P(Images, WalkerKindTest,
                         testing::Values(SKindCase{EImageKind::Cd, 1, 0, true, false},
                                         SKindCase{EImageKind::Cd, 200, 12, false, true},
                                         SKindCase{EImageKind::Cd, 2000, 300, true, true},
                                         SKindCase{EImageKind::Dvd, 1, 0, false, false},
                                         SKindCase{EImageKind::Dvd, 2000, 300, true, false},
                                         SKindCase{EImageKind::Umd, 300, 20, true, false},
                                         SKindCase{EImageKind::Umd, 1000, 1, false, false}));

TEST_F(WalkerTest, ReadsAllSectorsOfADirectory) {
    SImageDescription description;
    description.files = ManyFiles(500, 0, 3);
    Walk(description);
    ASSERT_GT(m_image.directories[0].size, 8U * 2048);
    ExpectSideFiles();
}

TEST_F(WalkerTest, FilesAtTheSameSectorKeepDirectoryOrder) {
    SImageDescription description;
    description.files = {{"Z.DAT", {}, 0, EEmptyFile::SharesSector},
                         {"B/M.DAT", {}, 0, EEmptyFile::SharesSector},
                         {"A/X.DAT", {}, 0, EEmptyFile::SharesSector},
                         {"A/A.DAT", Bytes(1, 1)}};
    Walk(description);
    EXPECT_EQ(List(),
              "00000019|00000000|00000000|\\Z.DAT\r\n"
              "00000019|00000001|00000001|\\A\\A.DAT\r\n"
              "00000019|00000000|00000000|\\A\\X.DAT\r\n"
              "00000019|00000000|00000000|\\B\\M.DAT\r\n");
}

TEST_F(WalkerTest, ManyFilesAtTheSameSectorKeepDirectoryOrder) {
    constexpr int kEmptyFiles = 200;
    SImageDescription description;
    for (int i = 0; i < kEmptyFiles; ++i) {
        description.files.push_back({std::to_string(1000 + i), {}, 0, EEmptyFile::SharesSector});
    }
    std::reverse(description.files.begin(), description.files.end());
    description.files.insert(description.files.begin() + kEmptyFiles / 2, {"MIDDLE", Bytes(1, 1)});
    Walk(description);
    std::vector<std::string> names;
    for (const SBuiltFile& file : m_image.files) {
        names.push_back(file.path);
    }
    ASSERT_TRUE(std::is_sorted(names.begin(), names.begin() + kEmptyFiles / 2));
    ExpectSideFiles();
}

TEST_F(WalkerTest, NamesAreCutAtTheVersion) {
    SImageDescription description;
    description.versions = false;
    description.files = {{"NOVER", Bytes(1, 1)}, {"A;1", Bytes(1, 1)}, {"B;2;3", Bytes(1, 1)}, {"C;", Bytes(1, 1)}};
    Walk(description);
    EXPECT_EQ(List(),
              "00000017|00000001|00000001|\\NOVER\r\n00000018|00000001|00000001|\\A\r\n"
              "00000019|00000001|00000001|\\B\r\n0000001A|00000001|00000001|\\C\r\n");
}

TEST_F(WalkerTest, OnlyRecordsWithoutFlagsAreFiles) {
    SImageDescription description;
    description.files = {
        {"HIDDEN", Bytes(1, 1)}, {"PLAIN", Bytes(1, 1)}, {"ASSOC", Bytes(1, 1)}, {"EXTENTS", Bytes(1, 1)}};
    m_image = BuildImage(description);
    m_image.bytes[m_image.File("\\HIDDEN").recordOffset + 25] = 1;
    m_image.bytes[m_image.File("\\ASSOC").recordOffset + 25] = 4;
    m_image.bytes[m_image.File("\\EXTENTS").recordOffset + 25] = 0x80;  // more extents follow
    Walk(m_image.bytes);
    EXPECT_EQ(List(), "00000018|00000001|00000001|\\PLAIN\r\n");
}

TEST_F(WalkerTest, CopiesThePathTableUpToItsOptionalCopy) {
    SImageDescription description;
    description.files = ManyFiles(300, 299, 5);
    Walk(description);
    const std::size_t sectors = (m_image.pathTableBytes + 2047) / 2048;
    ASSERT_GT(sectors, 1U);
    const auto start = m_image.bytes.begin() + static_cast<std::ptrdiff_t>(m_image.pathTableSector * 2048U);
    const Bytes table(start, start + static_cast<std::ptrdiff_t>(sectors * 2048));
    EXPECT_EQ(ReadWhole(m_folder / "tmp.tmp"), table);
    ExpectSideFiles();

    description.optionalPathTables = false;
    Walk(description);
    EXPECT_EQ(ReadWhole(m_folder / "tmp.tmp").size(), sectors * 2048);
    ExpectSideFiles();
}

TEST_F(WalkerTest, ADistantOptionalTableMakesTheCopyLonger) {
    SImageDescription description;
    description.files = ManyFiles(10, 3, 5);
    m_image = BuildImage(description);
    Write32(m_image.bytes, 32912, m_image.pathTableSector + 3);
    Walk(m_image.bytes);
    EXPECT_EQ(ReadWhole(m_folder / "tmp.tmp").size(), 3U * 2048);
    ExpectSideFiles();
}

TEST_F(WalkerTest, AnOptionalTableThatIsNotBehindTheTableIsIgnored) {
    SImageDescription description;
    description.files = ManyFiles(300, 299, 5);
    m_image = BuildImage(description);
    const std::size_t sectors = (m_image.pathTableBytes + 2047) / 2048;
    ASSERT_GT(sectors, 1U);
    for (const std::uint32_t optional : {m_image.pathTableSector, m_image.pathTableSector - 1, 1U}) {
        Write32(m_image.bytes, 32912, optional);
        Walk(m_image.bytes);
        EXPECT_EQ(ReadWhole(m_folder / "tmp.tmp").size(), sectors * 2048) << optional;
        ExpectSideFiles();
    }
}

TEST_F(WalkerTest, TheHeaderOfADvdIncludesFileEntriesBeforeTheFiles) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    description.files = ManyFiles(20, 4, 6);
    description.udfEntriesAfter = 5;
    description.udfHoleBeforeEntries = 3;
    Walk(description);
    EXPECT_EQ(m_image.headerEnd, m_image.directoryEnd + 8);
    ExpectSideFiles();
}

TEST_F(WalkerTest, WithoutFileEntriesTheHeaderEndsWithTheDirectories) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    description.files = ManyFiles(20, 4, 6);
    description.udfEntriesAfter = 0;
    description.files[0].holeBefore = 4;
    Walk(description);
    EXPECT_EQ(m_image.headerEnd, m_image.directoryEnd);
    ExpectSideFiles();
}

TEST_F(WalkerTest, IgnoresFileEntriesOfACd) {
    SImageDescription description;
    description.files = {{"A.BIN", Bytes(10, 1), 2}};
    m_image = BuildImage(description);
    Write32(m_image.bytes, std::size_t{m_image.directoryEnd} * 2048, 0x20105);
    Walk(m_image.bytes);
    ExpectSideFiles();
}

TEST_F(WalkerTest, SequenceOfCalls) {
    SImageDescription description;
    description.files = {{"A.BIN", Bytes(10, 1)}};
    Walk(description);
    const std::vector<std::string>& calls = m_operation.Calls();
    const std::vector<std::string> beginning = {"begin iso2iml", "pane FILE " + (m_folder / "game.iso")};
    ASSERT_GT(calls.size(), beginning.size());
    EXPECT_TRUE(std::equal(beginning.begin(), beginning.end(), calls.begin()));
    // one path table block, one path table record, 23 header sectors, one directory sector with three records
    EXPECT_EQ(m_operation.CallsOf("yield").size(), 1U + 1 + 23 + 4);
    EXPECT_EQ(calls.size(), beginning.size() + 29);
}

TEST_F(WalkerTest, WithoutSideFilesTheResultIsTheSame) {
    for (const EImageKind kind : {EImageKind::Cd, EImageKind::Dvd, EImageKind::Umd}) {
        SImageDescription description;
        description.kind = kind;
        description.files = ManyFiles(40, 6, 7);
        const SWalkedImage window = Walk(description);
        const std::vector<std::string> names = m_folder.Names();
        const SWalkedImage console = WalkIsoImage({m_folder / "game.iso", std::nullopt, true}, m_operation);
        EXPECT_EQ(m_folder.Names(), names);
        EXPECT_EQ(console.headerSectors, m_image.headerEnd);
        EXPECT_EQ(window.headerSectors, console.headerSectors);
        EXPECT_EQ(window.anchorTag, console.anchorTag);
        ASSERT_EQ(console.files.size(), m_image.files.size());
        for (std::size_t i = 0; i < console.files.size(); ++i) {
            EXPECT_EQ("\\" + console.files[i].path, m_image.files[i].path);
            EXPECT_EQ(console.files[i].start, m_image.files[i].sector);
            EXPECT_EQ(window.files[i].path, console.files[i].path);
        }
    }
}

TEST_F(WalkerTest, FindsTheImageIgnoringCase) {
    SImageDescription description;
    description.files = {{"A.BIN", Bytes(10, 1)}};
    WriteWhole(m_folder / "Game.ISO", BuildImage(description).bytes);
    WalkIsoImage(WindowWalk(), m_operation);
    EXPECT_EQ(List(), "00000017|0000000A|00000001|\\A.BIN\r\n");
}

// --- failures -----------------------------------------------------------------------------------------------------

class WalkerFailureTest : public WalkerTest {
protected:
    std::string Failure() {
        return FailureOf([&] { WalkIsoImage(WindowWalk(), m_operation); });
    }
    /// Not even a privileged user can open a folder as a file.
    void Block(const std::string& name) { ASSERT_TRUE(MakeFolder(m_folder / name)); }
    void MakeImage() {
        SImageDescription description;
        description.files = {{"A.BIN", Bytes(10, 1)}};
        m_image = BuildImage(description);
        WriteWhole(m_folder / "game.iso", m_image.bytes);
    }
};

TEST_F(WalkerFailureTest, MissingImage) {
    EXPECT_EQ(Failure(), "Code 101e - Error Opening " + (m_folder / "game.iso"));
}

TEST_F(WalkerFailureTest, ImageWithoutMark) {
    MakeImage();
    m_image.bytes[33793] = 'd';
    WriteWhole(m_folder / "game.iso", m_image.bytes);
    EXPECT_EQ(Failure(), "Code 9999 - invalid file header " + (m_folder / "game.iso"));
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"game.iso"}) << "nothing is written for a refused image";
}

TEST_F(WalkerFailureTest, SideFilesThatCannotBeCreated) {
    MakeImage();
    Block("game.iso.vlt");
    EXPECT_EQ(Failure(), "Code 1104- Error Opening " + (m_folder / "game.iso.vlt"));
    RemoveFile(m_folder / "tmp.tmp");
    Block("tmp.tmp");
    EXPECT_EQ(Failure(), "Code 1101c - Error Opening " + (m_folder / "tmp.tmp"));
    RemoveFile(m_folder / "game.iso-LBA.TXT");
    Block("game.iso-LBA.TXT");
    EXPECT_EQ(Failure(), "Code 1101b - Error Opening " + (m_folder / "game.iso-LBA.TXT"));
    RemoveFile(m_folder / "temp1.tmp");
    Block("temp1.tmp");
    EXPECT_EQ(Failure(), "Code 1101a - Error Opening " + (m_folder / "temp1.tmp"));
}

TEST_F(WalkerFailureTest, SideFilesThatCannotBeReopened) {
    MakeImage();
    // The path table is one block; the first yield follows its copy.
    m_operation.m_onYield = [&](int number) {
        if (number == 1) {
            RemoveFile(m_folder / "tmp.tmp");
        }
    };
    EXPECT_EQ(Failure(), "Code 1101d - Error Opening " + (m_folder / "tmp.tmp"));
}

TEST_F(WalkerFailureTest, HeaderCopyThatCannotBeReopened) {
    MakeImage();
    m_operation.m_onYield = [&](int number) {
        if (number == 10) {
            RemoveFile(m_folder / "temp1.tmp");
        }
    };
    EXPECT_EQ(Failure(), "Code 1101e - Error Opening " + (m_folder / "temp1.tmp"));
}

}  // namespace
}  // namespace vantrel::test
