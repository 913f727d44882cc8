// Exports images of the builder with their files, and rebuilds them, exactly, with the edit engine and like the window.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/input_file.h"
#include "iml/export/export.h"
#include "iml/layout/layout_names.h"
#include "iml/rebuild/rebuild.h"
#include "operation/text.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::EEmptyFile;
using test::EImageKind;
using test::EPostgap;
using test::SImageDescription;

class RoundTrip : public testing::Test {
protected:
    void Export(const std::string& image, const std::string& layout, const std::string& files) {
        SExportRequest request;
        request.imagePath = m_folder / image;
        request.layoutPath = m_folder / layout;
        request.manner = EOutputManner::CommitReplace;
        request.extractionFolder = m_folder / files;
        ExportImage(request, m_operation);
    }

    Bytes Rebuilt(ERebuildRule rule) {
        SRebuildRequest request = WindowRebuild(m_folder.Path(), "game.iml");
        request.sideFiles.reset();
        request.strict = true;
        request.manner = EOutputManner::CommitReplace;
        request.outputPath = m_folder / "rebuilt.iso";
        request.filesFolder = m_folder / "files/";
        request.rule = rule;
        request.gapsPath = GapPathOf(request.layoutPath);
        RebuildImage(request, m_operation);
        return test::ReadWhole(request.outputPath);
    }

    Bytes Exported(const SImageDescription& description) {
        Bytes image = test::BuildImage(description).bytes;
        test::WriteWhole(m_folder / "game.iso", image);
        Export("game.iso", "game.iml", "files/");
        return image;
    }

    /// The lines of a layout's list.
    std::string ListOf(const std::string& layout) const {
        const std::string text = test::ReadText(m_folder / layout);
        return text.substr(text.find("#Start"));
    }

    test::CTestFolder m_folder;
    test::CRecordingOperation m_operation;
};

std::vector<SImageDescription> Descriptions() {
    std::vector<SImageDescription> all;
    for (const EImageKind kind : {EImageKind::Cd, EImageKind::Dvd, EImageKind::Umd}) {
        SImageDescription plain;
        plain.kind = kind;
        plain.files = test::ManyFiles(60, 8, 5);
        all.push_back(plain);

        SImageDescription filled = plain;
        filled.files[3].holeBefore = 4;
        filled.files[30].holeBefore = 1;
        filled.holeFill = 0xEE;
        filled.paddingFill = 0xDD;
        filled.tailSectors = 7;
        filled.optionalPathTables = false;
        filled.xaAttributes = true;
        all.push_back(filled);

        SImageDescription empties;
        empties.kind = kind;
        empties.versions = false;
        empties.files = {{"A.BIN", test::RandomBytes(5000, 1)},
                         {"B", {}, 0, EEmptyFile::SharesSector},
                         {"C", {}, 2, EEmptyFile::OwnsSector},
                         {"D", test::RandomBytes(2049, 2)},
                         {"E", {}, 0, EEmptyFile::SharesSector}};
        all.push_back(empties);

        SImageDescription none;
        none.kind = kind;
        none.folders = {"LONELY/FOLDER"};
        none.tailSectors = 2;
        all.push_back(none);
    }
    return all;
}

TEST_F(RoundTrip, ExactAndEditedRebuildsRestoreEveryImage) {
    int number = 0;
    for (SImageDescription description : Descriptions()) {
        const bool isCd = description.kind == EImageKind::Cd;
        for (const EPostgap postgap : {EPostgap::None, EPostgap::Missing, EPostgap::Uncounted, EPostgap::Counted}) {
            if (postgap != EPostgap::None && !isCd) {
                continue;
            }
            description.postgap = postgap;
            const Bytes image = Exported(description);
            EXPECT_EQ(Rebuilt(ERebuildRule::Exact), image) << number;
            EXPECT_EQ(Rebuilt(ERebuildRule::Edited), image) << number;
            ++number;
        }
    }
    EXPECT_EQ(number, 4 * 4 + 2 * 4);
}

TEST_F(RoundTrip, DvdsWithOtherUdfShapes) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    description.files = test::ManyFiles(20, 3, 6);
    for (const bool anchorAt256 : {false, true}) {
        for (const bool anchorAtEnd : {false, true}) {
            for (const std::uint32_t hole : {0U, 3U}) {
                description.anchorAt256 = anchorAt256;
                description.anchorAtEnd = anchorAtEnd;
                description.udfHoleBeforeEntries = hole;
                description.udfEntriesAfter = hole == 0 ? 0 : 5;
                const Bytes image = Exported(description);
                EXPECT_EQ(Rebuilt(ERebuildRule::Exact), image);
            }
        }
    }
}

TEST_F(RoundTrip, DefaultRebuildKeepsFilesAndList) {
    for (SImageDescription description : Descriptions()) {
        // Files that share sectors would overwrite each other.
        std::erase_if(description.files, [](const test::SImageFile& file) {
            return file.content.empty() && file.whenEmpty == EEmptyFile::SharesSector;
        });
        const test::SBuiltImage built = test::BuildImage(description);
        Exported(description);
        const Bytes rebuilt = Rebuilt(ERebuildRule::LikeWindow);
        for (const test::SBuiltFile& file : built.files) {
            const auto start = rebuilt.begin() + static_cast<std::ptrdiff_t>(file.sector) * 2048;
            EXPECT_TRUE(std::equal(file.content.begin(), file.content.end(), start)) << file.path;
        }
        const std::string list = ListOf("game.iml");
        test::WriteWhole(m_folder / "game.iso", rebuilt);
        Export("game.iso", "game.iml", "again/");
        // A DVD keeps its last sector, and a CD gets its postgap behind the files; neither moves an entry.
        EXPECT_EQ(ListOf("game.iml"), list);
    }
}

TEST_F(RoundTrip, WithoutAGapFileTheLeadingStructuresAreChecked) {
    SImageDescription description;
    description.files = {{"A.BIN", test::RandomBytes(5000, 1)}};
    Exported(description);
    RemoveFile(m_folder / "game.gaps");
    const std::string layout = test::ReadText(m_folder / "game.iml");
    const std::size_t first = layout.find('\n', layout.find("game.ims")) + 1;
    const std::int32_t sector = std::stoi(layout.substr(first));
    test::WriteText(m_folder / "game.iml", std::string(layout).replace(first, 2, std::to_string(sector + 1)));
    EXPECT_EQ(test::FailureOf([&] { Rebuilt(ERebuildRule::Edited); }),
              Format("The directories have no file A.BIN at sectors %d to %d; a rebuild cannot rename, add or move "
                     "files, so the layout must list them as it did when it was exported",
                     sector + 1, sector + 2));
    test::WriteText(m_folder / "game.iml", layout);
    Bytes leading = test::ReadWhole(m_folder / "game.ims");
    test::Write32(leading, 0x8050, 0xFFFFFFFF);
    test::WriteWhole(m_folder / "game.ims", leading);
    EXPECT_EQ(test::FailureOf([&] { Rebuilt(ERebuildRule::Edited); }),
              (m_folder / "game.ims") + " describes an image larger than any disc");
}

TEST_F(RoundTrip, AnAnchorThatDiffersFromTheTrailingSectorIsNotRepeated) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    description.files = {{"A.BIN", test::RandomBytes(5000, 1)}};
    Bytes image = Exported(description);
    RemoveFile(m_folder / "game.gaps");
    EXPECT_EQ(Rebuilt(ERebuildRule::Edited), image);
    Bytes leading = test::ReadWhole(m_folder / "game.ims");
    leading[256 * 2048 + 5] ^= 1;
    test::WriteWhole(m_folder / "game.ims", leading);
    image[256 * 2048 + 5] ^= 1;
    std::fill(image.end() - 2048, image.end(), std::uint8_t{0});
    EXPECT_EQ(Rebuilt(ERebuildRule::Edited), image);
}

TEST_F(RoundTrip, FilesWithoutANameStayWhereTheyAre) {
    SImageDescription description;
    description.files = {{"A.BIN", test::RandomBytes(5000, 1)}, {"DIR/B.BIN", test::RandomBytes(100, 2)}};
    const test::SBuiltImage built = test::BuildImage(description);
    Bytes image = built.bytes;
    image[built.File("\\A.BIN").recordOffset + 33] = ';';
    image[built.File("\\DIR\\B.BIN").recordOffset + 33] = ';';
    test::WriteWhole(m_folder / "game.iso", image);
    Export("game.iso", "game.iml", "files/");
    EXPECT_EQ(Rebuilt(ERebuildRule::Exact), image);
    EXPECT_EQ(Rebuilt(ERebuildRule::Edited), image);
    RemoveFile(m_folder / "game.gaps");
    EXPECT_EQ(Rebuilt(ERebuildRule::Edited).size(), image.size());
}

TEST_F(RoundTrip, AnEmptyFileIsNoNameOfTheFileAtItsSector) {
    SImageDescription description;
    description.files = {{"A", {}, 0, EEmptyFile::SharesSector}, {"B.BIN", test::RandomBytes(5000, 1)}};
    Exported(description);
    test::WriteWhole(m_folder / "files/B.BIN", test::RandomBytes(5000, 2));
    Rebuilt(ERebuildRule::Edited);
    EXPECT_THAT(m_operation.CallsOf("notify"),
                testing::ElementsAre("notify B.BIN: changed in place at sector 23 (5000 bytes, now 5000)"));
}

}  // namespace
}  // namespace vantrel
