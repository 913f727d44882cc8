// The files of an image, compared with what the builder put into it.
#include "iso/contents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/input_file.h"
#include "tests/support/image_builder.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;

SContents ContentsOf(const Bytes& image) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.iso", image);
    CInputFile file;
    EXPECT_TRUE(file.Open(folder / "game.iso"));
    return ReadContents(file);
}

TEST(Contents, AreWhatTheBuilderPutIn) {
    for (const auto kind : {test::EImageKind::Cd, test::EImageKind::Dvd, test::EImageKind::Umd}) {
        test::SImageDescription description;
        description.kind = kind;
        for (int i = 0; i < 300; ++i) {
            description.files.push_back({"DIR" + std::to_string(i % 7) + "/SUB/FILE" + std::to_string(i) + ".BIN",
                                         Bytes(static_cast<std::size_t>(i) * 7, 1)});
        }
        const test::SBuiltImage built = test::BuildImage(description);
        const SContents contents = ContentsOf(built.bytes);
        EXPECT_EQ(contents.folders.size(), 15U);
        std::vector<std::string> expected;
        std::vector<std::string> found;
        for (const test::SBuiltFile& file : built.files) {
            std::string path = file.path.substr(1);
            std::replace(path.begin(), path.end(), '\\', '/');
            expected.push_back(path + " " + std::to_string(file.sector) + " " + std::to_string(file.content.size()));
        }
        for (const SContentFile& file : contents.files) {
            EXPECT_TRUE(file.inside);
            found.push_back(file.path + " " + std::to_string(file.Sector()) + " " + std::to_string(file.Size()));
        }
        EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected));
        EXPECT_TRUE(std::is_sorted(contents.files.begin(), contents.files.end(),
                                   [](const auto& a, const auto& b) { return a.Sector() < b.Sector(); }));
    }
}

TEST(Contents, TruncatedImages) {
    test::SImageDescription description;
    description.files = {{"A/B/C.BIN", test::RandomBytes(5000, 1)}, {"D.BIN", test::RandomBytes(5000, 2)}};
    const Bytes whole = test::BuildImage(description).bytes;
    for (std::size_t length = 0; length < whole.size(); length += 509) {
        const SContents contents =
            ContentsOf(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_LE(contents.files.size(), 2U);
    }
}

TEST(Contents, ADirectoryThatContainsItselfIsReadOnce) {
    test::SImageDescription description;
    description.files = {{"A/B.BIN", Bytes(10, 1)}};
    Bytes image = test::BuildImage(description).bytes;
    const std::uint32_t root = test::Read32(image, 16 * 2048 + 158);
    // The record of A, the third of the root, is made to point at the root.
    const std::size_t record = std::size_t{root} * 2048 + image[std::size_t{root} * 2048] * std::size_t{2};
    test::Write32(image, record + 2, root);
    const SContents contents = ContentsOf(image);
    EXPECT_EQ(contents.folders.size(), 1U);
    EXPECT_TRUE(contents.files.empty());
}

/// An image with the root records A, B and C, whose flags and lengths a test changes.
struct SRecords {
    Bytes image;
    std::size_t a;
    std::size_t b;

    SRecords() {
        test::SImageDescription description;
        description.files = {{"A.BIN", Bytes(4096, 1)}, {"B.BIN", Bytes(100, 2)}, {"C.BIN", Bytes(5, 3)}};
        const test::SBuiltImage built = test::BuildImage(description);
        image = built.bytes;
        a = built.File("\\A.BIN").recordOffset;
        b = built.File("\\B.BIN").recordOffset;
    }
    /// Makes B the second extent of A.
    void Join() {
        image[a + 25] = 0x80;
        image[b + 33] = 'A';
    }
};

TEST(Contents, ExtentsOfOneFileAreJoined) {
    SRecords records;
    records.Join();
    const SContents contents = ContentsOf(records.image);
    ASSERT_EQ(contents.files.size(), 2U);
    EXPECT_EQ(contents.files[0].path, "A.BIN");
    EXPECT_EQ(contents.files[0].extents.size(), 2U);
    EXPECT_EQ(contents.files[0].Size(), 4196);
    EXPECT_TRUE(contents.files[0].IsContiguous());
    EXPECT_EQ(contents.files[1].path, "C.BIN");
}

TEST(Contents, ExtentsApartAreNotContiguous) {
    SRecords records;
    records.Join();
    test::Write32(records.image, records.a + 10, 4095);
    EXPECT_FALSE(ContentsOf(records.image).files[0].IsContiguous()) << "the first extent ends within a sector";
    test::Write32(records.image, records.a + 10, 2048);
    EXPECT_FALSE(ContentsOf(records.image).files[0].IsContiguous()) << "a sector lies between the extents";
}

TEST(Contents, AnotherNameEndsAContinuedFile) {
    SRecords records;
    records.image[records.a + 25] = 0x80;
    EXPECT_EQ(ContentsOf(records.image).files.size(), 3U);
}

TEST(Contents, AFileWithAnyExtentBeyondTheImageIsNotInside) {
    for (const bool isFirst : {true, false}) {
        SRecords records;
        records.Join();
        const auto sectors = static_cast<std::uint32_t>(records.image.size() / 2048);
        test::Write32(records.image, (isFirst ? records.a : records.b) + 2, sectors);
        const SContents contents = ContentsOf(records.image);
        ASSERT_EQ(contents.files.size(), 2U);
        for (const SContentFile& file : contents.files) {
            EXPECT_EQ(file.inside, file.path == "C.BIN") << file.path;
        }
    }
}

TEST(Contents, PathsLongerThanTheLimitAreLeftOut) {
    std::string folder;
    for (int depth = 0; depth < 10; ++depth) {
        folder += std::string(198, 'F') + '/';
    }
    test::SImageDescription description;
    description.files = {{folder + "TEN_LETTER", {1}}, {folder + "ELEVEN_LETT", {1}}, {"A.BIN", {1}}};
    const SContents contents = ContentsOf(test::BuildImage(description).bytes);
    EXPECT_EQ(contents.folders.size(), 11U);
    std::vector<std::string> found;
    for (const SContentFile& file : contents.files) {
        found.push_back(file.path);
    }
    EXPECT_THAT(found, testing::UnorderedElementsAre("A.BIN", folder + "TEN_LETTER"));
}

}  // namespace
}  // namespace vantrel
