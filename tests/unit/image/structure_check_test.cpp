// What contradicts itself in the structures of an image, and what is only unusual.
#include "image/inspect/structure_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "image/inspect/disc_tree.h"
#include "image/inspect/overlap_check.h"
#include "iso/udf/unsupported.h"
#include "tests/support/image_builder.h"
#include "tests/support/memory_source.h"

namespace vantrel {
namespace {

using test::Bytes;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kSector = 2048;
constexpr std::size_t kDescriptor = 16 * kSector;

// Positions in a directory record.
constexpr std::size_t kLocation = 2;
constexpr std::size_t kFlags = 25;
constexpr std::size_t kNameLength = 32;
constexpr std::size_t kName = 33;

constexpr std::uint8_t kContinued = 128;
constexpr std::uint8_t kFolder = 2;

void WriteBoth(Bytes& image, std::size_t position, std::uint32_t value) {
    test::Write32(image, position, value);
    std::reverse_copy(image.begin() + static_cast<std::ptrdiff_t>(position),
                      image.begin() + static_cast<std::ptrdiff_t>(position) + 4,
                      image.begin() + static_cast<std::ptrdiff_t>(position) + 4);
}

/// A sound image that a test damages.
class StructureCheck : public testing::Test {
protected:
    StructureCheck() {
        test::SImageDescription description;
        description.files = {{"A.BIN", test::RandomBytes(2 * kSector, 1)},
                             {"B.BIN", test::RandomBytes(3000, 2)},
                             {"DIR/C.BIN", test::RandomBytes(100, 3)}};
        m_image = test::BuildImage(description);
        EXPECT_THAT(Problems(), IsEmpty());
    }

    std::vector<std::string> Problems() {
        test::CMemorySource image(m_image.bytes);
        return StructureProblems(image);
    }

    SDiscTree Tree() {
        test::CMemorySource image(m_image.bytes);
        CLimitedLines problems("more");
        return ReadIsoVolumes(image, problems).at(0).tree;
    }

    /// Positions of the record of a file, of the first record of the root, and of the path tables.
    std::size_t Record(std::string_view path) const { return m_image.File(path).recordOffset; }
    std::size_t Root() const { return m_image.directories[0].sector * kSector; }
    std::size_t TableL() const { return m_image.pathTableSector * kSector; }
    std::size_t TableM() const { return TableL() + 2 * kSector; }

    std::string RootText() const { return "the root directory (sector " + std::to_string(Root() / kSector) + ")"; }

    test::SBuiltImage m_image;
};

TEST_F(StructureCheck, PartsOfAFileThatFollowOneAnotherAreOneExtent) {
    Bytes& image = m_image.bytes;
    const std::uint32_t sector = m_image.File("\\A.BIN").sector;
    image[Record("\\A.BIN") + kFlags] = kContinued;
    ASSERT_EQ(Tree().files.size(), 3U) << "the next record has another name";
    image[Record("\\B.BIN") + kName] = 'A';
    SDiscTree tree = Tree();
    ASSERT_EQ(tree.files.size(), 2U);
    EXPECT_EQ(tree.files[0].path, "A.BIN");
    EXPECT_EQ(tree.files[0].size, 2 * std::int64_t{kSector} + 3000);
    EXPECT_THAT(tree.files[0].extents, ElementsAre(SExtent{sector, 2 * std::int64_t{kSector} + 3000}));
    EXPECT_THAT(Problems(), IsEmpty());
    WriteBoth(image, Record("\\B.BIN") + kLocation, sector + 4);
    tree = Tree();
    EXPECT_THAT(tree.files[0].extents,
                ElementsAre(SExtent{sector, 2 * std::int64_t{kSector}}, SExtent{sector + 4, 3000}));
}

TEST_F(StructureCheck, EachByteOfANumberCounts) {
    for (const std::size_t byte : {122U, 123U}) {  // the big-endian half of the volume set size
        m_image.bytes[kDescriptor + byte] ^= 4;
        EXPECT_THAT(Problems(),
                    ElementsAre("the volume descriptor in sector 16: the volume set size differs in its two byte "
                                "orders"));
        m_image.bytes[kDescriptor + byte] ^= 4;
    }
}

TEST_F(StructureCheck, AFolderThatContainsTheRootIsReadOnce) {
    const std::size_t record = Record("\\B.BIN");
    m_image.bytes[record + kFlags] = kFolder;
    WriteBoth(m_image.bytes, record + kLocation, static_cast<std::uint32_t>(Root() / kSector));
    const SDiscTree tree = Tree();
    EXPECT_EQ(tree.folders.size(), 2U);
    EXPECT_EQ(tree.files.size(), 2U);
}

TEST_F(StructureCheck, ADirectoryBeginsWithItsOwnRecord) {
    const Bytes sound = m_image.bytes;
    WriteBoth(m_image.bytes, Root() + kLocation, 5);
    EXPECT_THAT(Problems(), ElementsAre(RootText() + " does not begin with its own record"));
    m_image.bytes = sound;
    m_image.bytes[Root() + kName] = 1;
    EXPECT_THAT(Problems(), ElementsAre(RootText() + " does not begin with its own record"));
    m_image.bytes = sound;
    m_image.bytes[Root() + kName] = 'X';
    EXPECT_THAT(Problems(), Contains(RootText() + " does not begin with its own record"));
}

TEST_F(StructureCheck, ARecordWithoutANameIsNoFile) {
    m_image.bytes[Record("\\B.BIN") + kNameLength] = 0;
    const SDiscTree tree = Tree();
    ASSERT_EQ(tree.files.size(), 2U);
    EXPECT_EQ(tree.files[0].path, "A.BIN");
    EXPECT_EQ(tree.files[1].path, "DIR/C.BIN");
}

TEST_F(StructureCheck, PathsEndAtALength) {
    test::SImageDescription description;
    std::string path;
    for (int depth = 0; depth < 11; ++depth) {
        path += std::string(190, 'D') + '/';
    }
    description.files = {{path + "A.BIN", test::RandomBytes(100, 1)}};
    m_image = test::BuildImage(description);
    const SDiscTree tree = Tree();
    EXPECT_EQ(tree.folders.size(), 11U) << "the root and ten folders";
    EXPECT_THAT(tree.files, IsEmpty());
    EXPECT_THAT(Problems(),
                ElementsAre("the path table has a folder at sector " +
                            std::to_string(m_image.directories.back().sector) + ", the directories have none there"));
}

/// An image of nothing but directory sectors full of records without content. The last one of each is a folder.
class CFullDirectories : public CByteSource {
public:
    CFullDirectories() {
        Bytes record(34);
        record[0] = 34;
        record[kNameLength] = 1;
        record[kName] = 'A';
        for (std::size_t i = 0; i < kRecords; ++i) {
            std::copy(record.begin(), record.end(), m_sector.begin() + static_cast<std::ptrdiff_t>(i * record.size()));
        }
        WriteBoth(m_sector, 10, kSectors * kSector);
        WriteBoth(m_sector, (kRecords - 1) * record.size() + kLocation, kFolderSector);
        m_sector[(kRecords - 1) * record.size() + kFlags] = kFolder;
    }

    std::int64_t Size() const override { return (kSectors + kFolderSector) * std::int64_t{kSector}; }
    std::size_t ReadAt(std::int64_t, std::span<std::uint8_t> buffer) override {
        std::copy_n(m_sector.begin(), buffer.size(), buffer.begin());
        return buffer.size();
    }

private:
    static constexpr std::size_t kRecords = 60;
    static constexpr std::uint32_t kSectors = 20'000;  ///< of each directory
    static constexpr std::uint32_t kFolderSector = 5;

    Bytes m_sector = Bytes(kSector);
};

TEST(DiscTree, HasALimitOfRecords) {
    CFullDirectories image;
    CLimitedLines problems("more");
    const std::vector<SIsoVolume> volumes = ReadIsoVolumes(image, problems);
    EXPECT_THAT(problems.Lines(), Contains("more than 1048576 records in directories: the rest is not checked"));
    EXPECT_THAT(problems.Lines(), Contains("the root directory (sector 0) does not begin with its own record"));
    EXPECT_THAT(problems.Lines(), testing::Not(Contains(HasSubstr("the folder A")))) << "it is not visited";
    EXPECT_EQ(volumes.at(0).tree.files.size() + volumes.at(0).tree.folders.size(), 1'048'577U);
}

TEST(DiscTree, FilesInsideTheirUdfEntryHaveNoPlace) {
    SUdfVolume volume;
    volume.files = {{"", 290, true, 0, {}, false},
                    {"SMALL", 291, false, 20, {}, true},
                    {"LARGE", 292, false, 3000, {{300, 3000}}, false}};
    const SDiscTree tree = TreeOf(volume);
    ASSERT_EQ(tree.files.size(), 1U);
    EXPECT_EQ(tree.files[0].path, "LARGE");
    EXPECT_EQ(tree.files[0].sector, 300U);
}

TEST_F(StructureCheck, APathTableHasTheNamesOfTheOther) {
    m_image.bytes[TableM() + 10 + 8] = 'E';  // behind the record of the root
    EXPECT_THAT(Problems(), ElementsAre(HasSubstr("the type M path table in sector")));
}

TEST_F(StructureCheck, ARecordOfAPathTableLiesWithinIt) {
    m_image.bytes[TableL() + 10] = 200;  // the length of the name of DIR
    const std::vector<std::string> problems = Problems();
    EXPECT_THAT(problems, Contains("the path table ends before its length"));
    EXPECT_THAT(problems, Contains("the path table lacks the folder DIR"));
}

TEST_F(StructureCheck, ParentsInAPathTableExist) {
    for (const int parent : {0, 3, 255}) {
        m_image.bytes[TableL() + 10 + 6] = static_cast<std::uint8_t>(parent);
        EXPECT_THAT(Problems(), Contains("the path table has another parent for the folder DIR")) << parent;
    }
}

TEST(OverlapCheck, NothingOverlapsAnEmptyArea) {
    const SDiscTree tree = {"", {{"A", {{20, 5000}}, 20, 5000}}, {}};
    for (const std::int64_t size : {0, 1}) {
        CLimitedLines problems("more");
        CheckOverlaps(tree, {{{21, size}, "a path table"}}, problems);
        EXPECT_EQ(problems.Lines().size(), static_cast<std::size_t>(size)) << size;
    }
}

test::SBuiltImage ImageWithUdf() {
    test::SImageDescription description;
    description.kind = test::EImageKind::Dvd;
    description.udf = test::EUdf::Volume;
    description.files = {{"A.BIN", test::RandomBytes(100, 1)}};
    return test::BuildImage(description);
}

/// The volume recognition sequence, from sector 18 to 20, belongs to the descriptors.
TEST(StructureCheckOfUdf, FilesOverlapNoDescriptor) {
    for (const std::uint32_t sector : {18U, 20U, 21U}) {
        test::SBuiltImage built = ImageWithUdf();
        WriteBoth(built.bytes, built.File("\\A.BIN").recordOffset + kLocation, sector);
        test::CMemorySource image(built.bytes);
        const auto overlap = Contains(HasSubstr("the volume descriptors (sectors 16 to 20) and A.BIN"));
        if (sector < 21) {
            EXPECT_THAT(StructureProblems(image), overlap) << sector;
        } else {
            EXPECT_THAT(StructureProblems(image), testing::Not(overlap)) << sector;
        }
    }
}

TEST(StructureCheckOfUdf, AVolumeThatNeedsMoreThanIsReadMayBeSound) {
    constexpr std::size_t kLogicalVolumes[] = {35 * kSector, 51 * kSector};
    test::SBuiltImage built = ImageWithUdf();
    for (const std::uint32_t blockSize : {2048U, 4096U}) {
        for (const std::size_t position : kLogicalVolumes) {
            ASSERT_EQ(built.bytes[position], 6) << "a logical volume descriptor";
            test::Write32(built.bytes, position + 212, blockSize);
            test::WriteUdfTag(built.bytes, position, 6, 512, static_cast<std::uint32_t>(position / kSector));
        }
        test::CMemorySource image(built.bytes);
        EXPECT_THAT(StructureProblems(image), IsEmpty()) << blockSize;
        if (blockSize != kSector) {
            EXPECT_THROW(ReadUdfVolume(image), CUnsupportedUdf);
        }
    }
}

}  // namespace
}  // namespace vantrel
