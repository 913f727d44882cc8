// The console program's export with files: everything or nothing, and extracted files equal those in the image.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "files/native_file.h"
#include "files/path.h"
#include "iml/export/export.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_names.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel::test {
namespace {

class ExportFilesTest : public testing::Test {
protected:
    ExportFilesTest() {
        m_request.imagePath = m_in / "game.iso";
        m_request.layoutPath = m_out / "game.iml";
        m_request.extractionFolder = m_out.Path();
        m_request.existsHint = "; -f replaces it";
    }

    void SetImage(const SImageDescription& description) {
        m_image = BuildImage(description);
        WriteWhole(m_request.imagePath, m_image.bytes);
    }
    void SetFiles(std::vector<SImageFile> files) {
        SImageDescription description;
        description.files = std::move(files);
        SetImage(description);
    }
    /// A DVD that says so, whatever it has.
    void SetDvdOfSectors(std::uint32_t sectors) {
        SImageDescription description;
        description.kind = EImageKind::Dvd;
        description.files = {{"A.BIN", Bytes(1, 1)}};
        SetImage(description);
        Write32(m_image.bytes, 0x8050, sectors);
        SaveImage();
    }
    void SaveImage() { WriteWhole(m_request.imagePath, m_image.bytes); }
    void Rename(std::string_view path, std::string_view name) {
        const auto at = m_image.File(path).recordOffset + 33;
        std::copy(name.begin(), name.end(), m_image.bytes.begin() + static_cast<std::ptrdiff_t>(at));
        SaveImage();
    }

    void Export() { ExportImage(m_request, m_operation); }
    std::string Failure() {
        return FailureOf([&] { Export(); });
    }

    std::string DiskPath(std::string path) const {
        std::replace(path.begin(), path.end(), '\\', kPathSeparator);
        return m_out.Path() + path.substr(1);
    }
    void ExpectFiles() {
        for (const SBuiltFile& file : m_image.files) {
            EXPECT_EQ(ReadWhole(DiskPath(file.path)), file.content) << file.path;
        }
    }
    static std::size_t CountBelow(const std::string& folder) {
        using Iterator = std::filesystem::recursive_directory_iterator;
        return static_cast<std::size_t>(std::distance(Iterator(folder), Iterator()));
    }

    CTestFolder m_in;
    CTestFolder m_out;
    CRecordingOperation m_operation;
    SExportRequest m_request;
    SBuiltImage m_image;
};

TEST_F(ExportFilesTest, WithoutItTheLayoutAndItsLeadingFileAppearAlone) {
    SetFiles(ManyFiles(20, 3, 1));
    m_request.extractionFolder.reset();
    Export();
    EXPECT_EQ(m_out.Names(), (std::vector<std::string>{"game.iml", "game.ims"}));
    EXPECT_EQ(m_in.Names(), std::vector<std::string>{"game.iso"}) << "side files do not stay beside the image";
}

TEST_F(ExportFilesTest, WritesEveryFile) {
    for (const EImageKind kind : {EImageKind::Cd, EImageKind::Dvd, EImageKind::Umd}) {
        SImageDescription description;
        description.kind = kind;
        description.files = ManyFiles(150, 20, 2);
        SetImage(description);
        m_request.manner = EOutputManner::CommitReplace;
        Export();
        ExpectFiles();
        // files, folders (root apart), layout, leading file, gaps
        EXPECT_EQ(CountBelow(m_out.Path()), 150 + m_image.directories.size() - 1 + 3);
    }
}

TEST_F(ExportFilesTest, MakesItsFolder) {
    SetFiles({{"DIR/SUB/A.BIN", Bytes(10, 1)}});
    m_request.extractionFolder = (m_out / "new") + kPathSeparator;
    Export();
    EXPECT_EQ(m_out.Names(), (std::vector<std::string>{"game.gaps", "game.iml", "game.ims", "new"}));
    EXPECT_EQ(CountBelow(m_out / "new"), 3U);
}

TEST_F(ExportFilesTest, TheGapFileCompletesTheImage) {
    for (const EImageKind kind : {EImageKind::Cd, EImageKind::Dvd}) {
        SImageDescription description;
        description.kind = kind;
        description.files = ManyFiles(60, 5, 3);
        description.files[20].holeBefore = 3;
        description.holeFill = 0xA5;
        description.paddingFill = 0x5A;
        description.tailSectors = 2;
        description.postgap = kind == EImageKind::Cd ? EPostgap::Counted : EPostgap::None;
        SetImage(description);
        m_request.manner = EOutputManner::CommitReplace;
        Export();
        // The leading file, the extracted files and the gaps put together are the image.
        CGapFileReader gaps;
        ASSERT_TRUE(gaps.Open(m_out / "game.gaps")) << gaps.Problem();
        Bytes image(static_cast<std::size_t>(gaps.Origin().image.length));
        const Bytes leading = ReadWhole(m_out / "game.ims");
        std::copy_n(leading.begin(), std::size_t{m_image.headerEnd} * 2048, image.begin());
        for (const SBuiltFile& file : m_image.files) {
            const Bytes content = ReadWhole(DiskPath(file.path));
            std::copy(content.begin(), content.end(), image.begin() + std::ptrdiff_t{file.sector} * 2048);
        }
        for (std::size_t i = 0; i < gaps.Areas().size(); ++i) {
            const SImageArea& area = gaps.Areas()[i];
            const std::span<std::uint8_t> place(&image[static_cast<std::size_t>(area.position)],
                                                static_cast<std::size_t>(area.length));
            EXPECT_EQ(gaps.ReadAt(i, 0, place), place.size());
        }
        EXPECT_TRUE(image == m_image.bytes);
    }
}

// --- refusals: the message names the file, and nothing remains

class ExportRefusalTest : public ExportFilesTest {
protected:
    void ExpectRefusal(const std::string& part) {
        const std::size_t before = CountBelow(m_out.Path());
        const std::string failure = Failure();
        EXPECT_NE(failure.find(part), std::string::npos) << failure;
        EXPECT_EQ(CountBelow(m_out.Path()), before);
    }
};

TEST_F(ExportRefusalTest, NamesThatLeaveTheFolder) {
    SetFiles({{"AB", Bytes(1, 1)}, {"DIR/CD", Bytes(1, 1)}});
    Rename("\\AB", "..");
    ExpectRefusal("\"..\" cannot be extracted: it would leave the folder");
    Rename("\\AB", "AB");
    Rename("\\DIR\\CD", "..");
    ExpectRefusal("\"DIR\\..\" cannot be extracted: it would leave the folder");
}

TEST_F(ExportRefusalTest, NamesWithSeparators) {
    SetFiles({{"ABCDEFGH", Bytes(1, 1)}});
    Rename("\\ABCDEFGH", "..\\..\\AB");
    ExpectRefusal("would leave the folder");
    Rename("\\ABCDEFGH", "\\ABCDEFG");
    ExpectRefusal("has a folder without a name");
    Rename("\\ABCDEFGH", "/etc/abc");
    ExpectRefusal("has a '/' in a name");
}

TEST_F(ExportFilesTest, SkipsNamesThatEndInASeparator) {
    SetFiles({{"ABCDEFGH", Bytes(1, 1)}});
    Rename("\\ABCDEFGH", "A\\..\\..\\");
    Export();
    EXPECT_EQ(m_out.Names(), (std::vector<std::string>{"game.gaps", "game.iml", "game.ims"}));
    EXPECT_EQ(m_operation.CallsOf("notify"),
              std::vector<std::string>{"notify 1 files are not in the layout, which cannot represent them: A\\..\\..\\ "
                                       "(without a name)"});
}

TEST_F(ExportRefusalTest, FilesThatClash) {
    SetFiles({{"AB", Bytes(1, 1)}, {"AC", Bytes(1, 1)}, {"DI/A", Bytes(1, 1)}});
    Rename("\\AC", "AB");
    ExpectRefusal("\"AB\" and \"AB\" cannot both be extracted");
    Rename("\\AC", "DI");
    ExpectRefusal("\"DI\" and \"DI\\A\" cannot both be extracted");
}

TEST_F(ExportRefusalTest, ExistingFiles) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"DIR/B.BIN", Bytes(1, 1)}});
    WriteText(m_out / "A.BIN", "mine");
    ExpectRefusal(m_out / "A.BIN exists already; -f replaces it");
    EXPECT_EQ(ReadText(m_out / "A.BIN"), "mine");
    m_request.manner = EOutputManner::CommitReplace;
    Export();
    ExpectFiles();
}

TEST_F(ExportRefusalTest, AFolderInTheWay) {
    SetFiles({{"A.BIN", Bytes(1, 1)}});
    ASSERT_TRUE(MakeFolder(m_out / "A.BIN"));
    m_request.manner = EOutputManner::CommitReplace;
    ExpectRefusal("exists and is not a file");
}

TEST_F(ExportRefusalTest, FilesNamedLikeTheImageOrTheOutputs) {
    SetFiles({{"game.iso", Bytes(1, 1)}});
    m_request.manner = EOutputManner::CommitReplace;
    m_request.extractionFolder = m_in.Path();
    ExpectRefusal("is a file of the image");
    EXPECT_EQ(ReadWhole(m_request.imagePath), m_image.bytes);
    for (const char* name : {"game.iml", "game.ims", "game.gaps"}) {
        SetFiles({{name, Bytes(1, 1)}});
        m_request.extractionFolder = m_out.Path();
        ExpectRefusal("is another output of the same export");
    }
}

TEST_F(ExportRefusalTest, ATruncatedImage) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"B.BIN", Bytes(5000, 1)}});
    m_image.bytes.resize(m_image.File("\\B.BIN").sector * std::size_t{2048} + 4999);
    SaveImage();
    ExpectRefusal("\"B.BIN\" cannot be extracted: the image ends before it does");
}

TEST_F(ExportFilesTest, NotifiesAboutFilesBeyondTheImage) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"B.BIN", Bytes(5000, 1)}, {"C.BIN", Bytes(2048, 1)}});
    m_image.bytes.resize(m_image.File("\\B.BIN").sector * std::size_t{2048} + 4999);
    SaveImage();
    m_request.extractionFolder.reset();
    Export();
    EXPECT_EQ(m_operation.CallsOf("notify"),
              std::vector<std::string>{"notify " + m_request.imagePath + " ends before 2 of the listed files do"});
    EXPECT_NE(ReadText(m_request.layoutPath).find("\"C.BIN\""), std::string::npos);
}

TEST_F(ExportFilesTest, AFileMayEndWithTheImage) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"B.BIN", Bytes(5000, 1)}});
    m_image.bytes.resize(m_image.File("\\B.BIN").sector * std::size_t{2048} + 5000);
    SaveImage();
    m_request.extractionFolder.reset();
    Export();
    EXPECT_TRUE(m_operation.CallsOf("notify").empty());
}

TEST_F(ExportRefusalTest, AnEmptyFileBehindTheLastSectorOfAnyDisc) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"EMPTY.DAT", {}}});
    const std::size_t extent = m_image.File("\\EMPTY.DAT").recordOffset + 2;
    Write32(m_image.bytes, extent, 1U << 24U);
    SaveImage();
    ExpectRefusal("\"EMPTY.DAT\" cannot be exported: it is recorded at sector 16777216, which exists on no disc");
    EXPECT_EQ(m_operation.CallsOf("notify").size(), 1U);
    Write32(m_image.bytes, extent, (1U << 24U) - 1);
    SaveImage();
    Export();
    EXPECT_EQ(m_operation.CallsOf("notify").size(), 1U) << "none for the last sector";
}

TEST_F(ExportRefusalTest, AnEmptyFileAtASectorThatExistsOnNoDisc) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"EMPTY.DAT", {}}});
    Write32(m_image.bytes, m_image.File("\\EMPTY.DAT").recordOffset + 2, 1936683035);
    SaveImage();
    ExpectRefusal("\"EMPTY.DAT\" cannot be exported: it is recorded at sector 1936683035, which exists on no disc");
    EXPECT_EQ(m_operation.CallsOf("notify"),
              std::vector<std::string>{"notify " + m_request.imagePath + " ends before 1 of the listed files do"});
}

TEST_F(ExportRefusalTest, AVolumeLargerThanAnyDisc) {
    SetDvdOfSectors((1U << 24U) + 1);
    ExpectRefusal(m_request.imagePath +
                  " cannot be exported with its files: its volume has 16777217 sectors, more than any disc");
    EXPECT_EQ(m_operation.CallsOf("notify"),
              std::vector<std::string>{"notify The volume of " + m_request.imagePath +
                                       " has 16777217 sectors, more than any disc; its layout cannot be rebuilt"});
}

TEST_F(ExportFilesTest, AVolumeAsLargeAsAnyDisc) {
    SetDvdOfSectors(1U << 24U);
    Export();
    ExpectFiles();
    EXPECT_TRUE(m_operation.CallsOf("notify").empty());
}

TEST_F(ExportRefusalTest, DirectoriesBeyondTheImage) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"DIR/B.BIN", Bytes(1, 1)}});
    // The record of DIR in the root, behind ".", ".." and A.BIN.
    Write32(m_image.bytes, m_image.File("\\A.BIN").recordOffset + 40 + 2, 100000);
    SaveImage();
    m_request.extractionFolder.reset();
    ExpectRefusal("before its directory at sector 100000");
}

TEST_F(ExportRefusalTest, AnImageThatEndsWithinADirectory) {
    SetFiles({{"A.BIN", Bytes(1, 1)}, {"DIR/B.BIN", Bytes(1, 1)}});
    m_image.bytes.resize(m_image.directoryEnd * std::size_t{2048} - 1);
    SaveImage();
    m_request.extractionFolder.reset();
    const std::string end = std::to_string(m_image.directoryEnd);
    ExpectRefusal("game.iso ends at sector " + end + ", within its directory at sector ");
}

TEST_F(ExportFilesTest, AFailureUndoesTheWholeExport) {
    SetFiles(ManyFiles(30, 6, 5));
    bool done = false;
    m_operation.m_onYield = [&](int) {
        // Another program creates a file that the export will write later.
        if (!done && !m_out.Names().empty()) {
            done = true;
            const std::string last = DiskPath(m_image.files.back().path);
            std::filesystem::create_directories(FolderOf(last));
            WriteText(last, "mine");
        }
    };
    EXPECT_NE(Failure(), "did not fail");
    ASSERT_TRUE(done);
    EXPECT_EQ(ReadText(DiskPath(m_image.files.back().path)), "mine");
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_out.Path())) {
        files += entry.is_regular_file() ? 1 : 0;
    }
    EXPECT_EQ(files, 1U);
}

TEST_F(ExportFilesTest, DamagedImagesWriteNothingOutsideOfTheFolder) {
    SetFiles(ManyFiles(12, 3, 9));
    const SBuiltImage whole = m_image;
    CTestFolder outside;
    m_request.layoutPath = outside / "inner/game.iml";
    m_request.extractionFolder = outside / "inner/";
    m_request.manner = EOutputManner::CommitReplace;
    std::mt19937 random(4711);
    int exported = 0;
    for (int round = 0; round < 80; ++round) {
        ASSERT_TRUE(MakeFolder(outside / "inner"));
        m_image = whole;
        for (int i = 0; i < 4; ++i) {
            m_image.bytes[(16 + random() % 12) * 2048 + random() % 400] = static_cast<std::uint8_t>(random());
        }
        SaveImage();
        exported += Failure() == "did not fail" ? 1 : 0;
        EXPECT_EQ(outside.Names(), std::vector<std::string>{"inner"});
        std::filesystem::remove_all(outside / "inner");
    }
    EXPECT_GT(exported, 10);
    EXPECT_LT(exported, 80);
}

TEST_F(ExportFilesTest, NotifiesAboutAnUnknownMedium) {
    SetFiles({{"A.BIN", Bytes(1, 1)}});
    m_image.bytes[33343] = 'X';
    SaveImage();
    Export();
    EXPECT_EQ(m_operation.CallsOf("notify").size(), 1U);
}

TEST_F(ExportFilesTest, ALayoutInAMissingFolderFails) {
    SetFiles({{"A.BIN", Bytes(1, 1)}});
    m_request.layoutPath = m_out / "missing/game.iml";
    EXPECT_EQ(Failure().find("Code 4101 - Error Opening " + (m_out / "missing/game.ims")), 0U);
}

}  // namespace
}  // namespace vantrel::test
