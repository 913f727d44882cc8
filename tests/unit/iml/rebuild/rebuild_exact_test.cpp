// The exact rebuild of exported images: what it places, and what it refuses before the image gets its name.
#include <gtest/gtest.h>

#include "iml/export/export.h"
#include "iml/layout/layout_names.h"
#include "iml/rebuild/rebuild.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::EEmptyFile;
using test::SImageDescription;

class RebuildExact : public testing::Test {
protected:
    RebuildExact() {
        m_description.files = {{"A.BIN", test::RandomBytes(2043, 1)},
                               {"B.BIN", test::RandomBytes(2047, 2)},
                               {"DIR/C.BIN", test::RandomBytes(5000, 3), 3}};
        m_description.holeFill = 0x5A;
        m_description.tailSectors = 4;
    }

    void Export(const Bytes& image) {
        test::WriteWhole(m_folder / "disc.iso", image);
        SExportRequest request;
        request.imagePath = m_folder / "disc.iso";
        request.layoutPath = m_folder / "game.iml";
        request.manner = EOutputManner::CommitReplace;
        request.extractionFolder = m_folder.Path();
        ExportImage(request, m_operation);
        m_names = m_folder.Names();
    }

    void Export() { Export(test::BuildImage(m_description).bytes); }

    /// An image with two records of the place of A.BIN.
    Bytes ImageWithTwoNames() {
        m_description.files[1].content = m_description.files[0].content;
        const test::SBuiltImage built = test::BuildImage(m_description);
        Bytes image = built.bytes;
        const std::size_t first = built.File("\\A.BIN").recordOffset;
        const std::size_t second = built.File("\\B.BIN").recordOffset;
        std::copy_n(image.begin() + static_cast<std::ptrdiff_t>(first) + 2, 16,
                    image.begin() + static_cast<std::ptrdiff_t>(second) + 2);
        return image;
    }

    std::string ProblemOf(const std::string& leadingName = "game.ims", ERebuildRule rule = ERebuildRule::Exact) {
        SRebuildRequest request;
        request.layoutPath = m_folder / "game.iml";
        request.leadingPath = m_folder / leadingName;
        request.gapsPath = GapPathOf(request.layoutPath);
        request.outputPath = m_folder / "game.iso";
        request.manner = EOutputManner::CommitNew;
        request.filesFolder = m_folder.Path();
        request.strict = true;
        request.rule = rule;
        return test::FailureOf([&] { RebuildImage(request, m_operation); });
    }

    void ExpectRefused(const std::string& problem) {
        EXPECT_EQ(ProblemOf(), problem);
        EXPECT_EQ(m_folder.Names(), m_names);
    }

    test::CTestFolder m_folder;
    std::vector<std::string> m_names;
    SImageDescription m_description;
    test::CRecordingOperation m_operation;
};

TEST_F(RebuildExact, AFileThatGrewWithinItsSectors) {
    Export();
    test::WriteWhole(m_folder / "A.BIN", test::RandomBytes(2048, 4));
    ExpectRefused("A.BIN has 2048 bytes, but the image records 2043: an exact rebuild needs unchanged files");
}

TEST_F(RebuildExact, AFileThatGrewOverItsNeighbour) {
    Export();
    test::WriteWhole(m_folder / "B.BIN", test::RandomBytes(2100, 4));
    ExpectRefused("B.BIN has 2100 bytes, but the image records 2047: an exact rebuild needs unchanged files");
}

TEST_F(RebuildExact, AFileWithOtherContent) {
    Export();
    test::WriteWhole(m_folder / "A.BIN", test::RandomBytes(2043, 4));
    ExpectRefused("A.BIN has changed: an exact rebuild needs unchanged files");
}

TEST_F(RebuildExact, ContentInAnEmptyFileThatSharesASector) {
    m_description.files[0] = {"A.BIN", {}, 0, EEmptyFile::SharesSector};
    Export();
    test::WriteWhole(m_folder / "A.BIN", test::RandomBytes(5, 4));
    ExpectRefused("A.BIN has 5 bytes, but the image records it as empty, at the sector of B.BIN");
}

TEST_F(RebuildExact, ContentInAnEmptyFileWithASectorOfItsOwn) {
    m_description.files[0] = {"A.BIN", {}, 0, EEmptyFile::OwnsSector};
    Export();
    test::WriteWhole(m_folder / "A.BIN", test::RandomBytes(5, 4));
    ExpectRefused("A.BIN has 5 bytes, but the image records 0: an exact rebuild needs unchanged files");
}

TEST_F(RebuildExact, TwoNamesOfOnePlace) {
    const Bytes image = ImageWithTwoNames();
    Export(image);
    EXPECT_EQ(ProblemOf(), "did not fail");
    EXPECT_TRUE(test::ReadWhole(m_folder / "game.iso") == image);
    RemoveFile(m_folder / "game.iso");
    test::WriteWhole(m_folder / "B.BIN", test::RandomBytes(2043, 4));
    ExpectRefused("A.BIN and B.BIN are two names of the same sectors, but their contents differ");
}

TEST_F(RebuildExact, WithoutAGapFile) {
    Export();
    RemoveFile(m_folder / "game.gaps");
    EXPECT_EQ(ProblemOf(), (m_folder / "game.gaps") +
                               " is missing: an exact rebuild needs the gap file that \"vantrel iso2iml --extract\" "
                               "writes");
}

TEST_F(RebuildExact, AGapFileOfAnotherLayout) {
    Export();
    const std::string layout = test::ReadText(m_folder / "game.iml");
    test::WriteText(m_folder / "game.iml", layout + "\r\n");
    ExpectRefused((m_folder / "game.gaps") + " belongs to another layout than " + (m_folder / "game.iml") +
                  ": an exact rebuild needs both as one export wrote them");
}

TEST_F(RebuildExact, AGapFileOfAnImageLargerThanAnyDisc) {
    Export();
    Bytes gaps = test::ReadWhole(m_folder / "game.gaps");
    test::Write64(gaps, 8, 1ULL << 36U);
    test::WriteWhole(m_folder / "game.gaps", gaps);
    ExpectRefused((m_folder / "game.gaps") + " describes an image larger than any disc");
    test::WriteText(m_folder / "game.gaps", "something else");
    ExpectRefused((m_folder / "game.gaps") + ": not a gap file");
}

TEST_F(RebuildExact, AGapFileThatLacksAFile) {
    Export();
    constexpr std::size_t kAreaCount = 16;
    constexpr std::size_t kFileCount = 36;
    constexpr std::size_t kEntry = 16;
    Bytes gaps = test::ReadWhole(m_folder / "game.gaps");
    const std::size_t firstFile = 56 + kEntry * test::Read32(gaps, kAreaCount);
    test::Write32(gaps, kFileCount, test::Read32(gaps, kFileCount) - 1);
    gaps.erase(gaps.begin() + static_cast<std::ptrdiff_t>(firstFile),
               gaps.begin() + static_cast<std::ptrdiff_t>(firstFile + kEntry));
    test::WriteWhole(m_folder / "game.gaps", gaps);
    EXPECT_EQ(ProblemOf("game.ims", ERebuildRule::Edited), "did not fail");
    RemoveFile(m_folder / "game.iso");
    test::WriteWhole(m_folder / "A.BIN", test::RandomBytes(2043, 4));
    const std::string problem = "The image would differ from the one that " + (m_folder / "game.iml") +
                                " was exported from: a file or the leading structures have changed";
    EXPECT_EQ(ProblemOf("game.ims", ERebuildRule::Edited), problem);
    ExpectRefused(problem);
}

TEST_F(RebuildExact, LeadingStructuresOfAnotherDisc) {
    Export();
    const Bytes leading = test::ReadWhole(m_folder / "game.ims");
    m_description.files[0].path = "OTHER.BIN";
    Bytes other = test::BuildImage(m_description).bytes;
    other.resize(leading.size());
    test::WriteWhole(m_folder / "other.ims", other);
    EXPECT_TRUE(ProblemOf("other.ims").starts_with("The directories have no file A.BIN at sectors "));
}

TEST_F(RebuildExact, ChangedLeadingStructures) {
    Export();
    Bytes leading = test::ReadWhole(m_folder / "game.ims");
    leading[5] ^= 1U;
    test::WriteWhole(m_folder / "game.ims", leading);
    ExpectRefused("The image would differ from the one that " + (m_folder / "game.iml") +
                  " was exported from: a file or the leading structures have changed");
}

}  // namespace
}  // namespace vantrel
