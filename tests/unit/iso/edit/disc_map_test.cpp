// What a map finds in images, and what it refuses.
#include "iso/edit/disc_map.h"

#include <gtest/gtest.h>

#include "files/refused.h"
#include "tests/unit/iso/edit/memory_image.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CMemoryImage;
using test::EEmptyFile;
using test::EImageKind;
using test::PlaceOf;

class DiscMap : public testing::Test {
protected:
    DiscMap() {
        m_description.kind = EImageKind::Umd;
        m_description.files = {{"A.BIN", test::RandomBytes(5000, 1)},
                               {"DIR/B.BIN", test::RandomBytes(3000, 2), 4},
                               {"DIR/SUB/C.BIN", test::RandomBytes(2048, 3)},
                               {"EMPTY.DAT", {}, 0, EEmptyFile::SharesSector},
                               {"Z.BIN", test::RandomBytes(1, 4)}};
        Build();
    }

    void Build() {
        m_built = test::BuildImage(m_description);
        m_image.m_bytes = m_built.bytes;
    }

    SDiscMap Map(EMapRule rule = EMapRule::Complete) { return ReadDiscMap(m_image, rule); }

    std::string Refusal() {
        try {
            Map();
        } catch (const CRefused& refused) {
            return refused.what();
        }
        return "not refused";
    }

    std::size_t RecordOf(const char* path) const { return m_built.File(path).recordOffset; }

    test::SImageDescription m_description;
    test::SBuiltImage m_built;
    CMemoryImage m_image{{}};
};

TEST_F(DiscMap, HasEveryPlaceWithItsNamesAndRecords) {
    const SDiscMap map = Map();
    ASSERT_EQ(map.places.size(), 5U);
    for (const test::SBuiltFile& file : m_built.files) {
        std::string path = file.path.substr(1);
        std::replace(path.begin(), path.end(), '\\', '/');
        const SDiscPlace& place = map.places.at(PlaceOf(map, path));
        EXPECT_EQ(place.Sector(), file.sector) << path;
        EXPECT_EQ(place.Size(), static_cast<std::int64_t>(file.content.size()));
        ASSERT_EQ(place.names.size(), 1U);
        EXPECT_EQ(place.names[0].record, static_cast<std::int64_t>(file.recordOffset));
        EXPECT_STREQ(place.obstacle, "");
    }
    ASSERT_EQ(map.volumeSizes.size(), 1U);
    EXPECT_EQ(map.volumeSizes[0].sectors, m_built.volumeSectors);
    EXPECT_EQ(map.closingSector, map.Sectors());
}

TEST_F(DiscMap, KnowsWhichSectorsAreFree) {
    const SDiscMap map = Map();
    const std::uint32_t second = m_built.File("\\DIR\\B.BIN").sector;
    EXPECT_TRUE(map.occupied.IsFree(second - 4, second)) << "the hole";
    EXPECT_FALSE(map.occupied.IsFree(second + 1, second + 2));
    EXPECT_FALSE(map.occupied.IsFree(0, 1)) << "the system area";
    for (const test::SBuiltDirectory& directory : m_built.directories) {
        EXPECT_FALSE(map.occupied.IsFree(directory.sector, directory.sector + 1));
    }
    EXPECT_FALSE(map.occupied.IsFree(m_built.pathTableSector, m_built.pathTableSector + 1));
}

TEST_F(DiscMap, TwoNamesOfOnePlace) {
    const test::SBuiltFile& first = m_built.File("\\A.BIN");
    test::SetRecord(m_image.m_bytes, RecordOf("\\DIR\\B.BIN"), first.sector, 5000);
    const SDiscMap map = Map();
    ASSERT_EQ(PlaceOf(map, "A.BIN"), PlaceOf(map, "DIR/B.BIN"));
    EXPECT_EQ(map.places[PlaceOf(map, "A.BIN")].names.size(), 2U);
}

TEST_F(DiscMap, EmptyFilesAreApartFromWhatSharesTheirSector) {
    const SDiscMap map = Map();
    const SDiscPlace& empty = map.places.at(PlaceOf(map, "EMPTY.DAT"));
    EXPECT_EQ(empty.Sector(), m_built.File("\\Z.BIN").sector);
    EXPECT_NE(PlaceOf(map, "EMPTY.DAT"), PlaceOf(map, "Z.BIN"));
    EXPECT_EQ(map.FindPlace(empty.Sector(), 0, "EMPTY.DAT"), PlaceOf(map, "EMPTY.DAT"));
    EXPECT_EQ(map.FindPlace(empty.Sector(), 1, "Z.BIN"), PlaceOf(map, "Z.BIN"));
    EXPECT_EQ(map.FindPlace(empty.Sector(), 2, "Z.BIN"), std::nullopt);
    EXPECT_EQ(map.FindPlace(empty.Sector(), 0, "OTHER.DAT"), std::nullopt);
    EXPECT_EQ(map.FindPlace(empty.Sector() - 1, 0, "EMPTY.DAT"), std::nullopt);
}

TEST_F(DiscMap, EmptyFilesAtOneSectorAreToldApartByTheirNames) {
    m_description.files.push_back({"EMPTY2.DAT", {}, 0, EEmptyFile::SharesSector});
    m_description.files.push_back({"EMPTY3.DAT", {}, 0, EEmptyFile::SharesSector});
    Build();
    const SDiscMap map = Map();
    const std::uint32_t sector = m_built.File("\\EMPTY2.DAT").sector;
    ASSERT_EQ(m_built.File("\\EMPTY3.DAT").sector, sector);
    for (const char* const path : {"EMPTY2.DAT", "EMPTY3.DAT"}) {
        EXPECT_EQ(map.FindPlace(sector, 0, path), PlaceOf(map, path));
    }
}

TEST_F(DiscMap, ThePostgapOfACdClosesIt) {
    m_description.kind = EImageKind::Cd;
    m_description.postgap = test::EPostgap::Counted;
    Build();
    EXPECT_EQ(Map().closingSector, Map().Sectors() - 150);
    const auto start = m_image.m_bytes.end() - 150 * 2048;
    std::copy_n("postgap", 7, start);
    EXPECT_EQ(Map().closingSector, Map().Sectors() - 150) << "with its mark";
    *(start + 9000) = 1;
    EXPECT_EQ(Map().closingSector, Map().Sectors()) << "data is no postgap";
    *(start + 9000) = 0;
    m_image.m_bytes.pop_back();
    EXPECT_EQ(Map().closingSector, Map().Sectors()) << "a postgap is whole sectors";
}

TEST_F(DiscMap, AFileOfZerosIsNoPostgap) {
    m_description.kind = EImageKind::Cd;
    m_description.files.back().content = Bytes(200 * 2048);
    Build();
    EXPECT_EQ(Map().closingSector, Map().Sectors());
}

TEST_F(DiscMap, StructuresBehindTheClosingAnchorKeepItInPlace) {
    m_description.kind = EImageKind::Dvd;
    m_description.udf = test::EUdf::Volume;
    Build();
    const std::uint32_t anchor = Map().Sectors() - 1;
    EXPECT_EQ(Map().closingSector, anchor);
    const std::size_t table = std::size_t{m_built.pathTableSector} * 2048;
    m_image.m_bytes.insert(m_image.m_bytes.end(), m_built.bytes.begin() + static_cast<std::ptrdiff_t>(table),
                           m_built.bytes.begin() + static_cast<std::ptrdiff_t>(table + 2048));
    test::Write32(m_image.m_bytes, 16 * 2048 + 140, anchor + 1);
    EXPECT_EQ(Map().closingSector, Map().Sectors());
}

/// DVDs whose UDF volume names other files than their directories.
class DiscMapOfUdf : public DiscMap {
protected:
    DiscMapOfUdf() {
        m_description.kind = EImageKind::Dvd;
        m_description.udf = test::EUdf::Volume;
    }

    /// Leaves room for another UDF volume before the first file, and free sectors behind the last one.
    void Build(std::vector<test::SImageFile> files) {
        m_description.files = std::move(files);
        m_description.files.front().holeBefore = 10;
        m_description.tailSectors = 10;
        DiscMap::Build();
    }

    std::uint32_t SectorOf(const char* path) const { return m_built.File(path).sector; }

    /// Names of the UDF files of a place.
    std::vector<std::string> UdfNames(const SDiscMap& map, const char* path) const {
        std::vector<std::string> names;
        for (const std::size_t file : map.places.at(PlaceOf(map, path)).udfFiles) {
            names.push_back(map.udf->files[file].path);
        }
        return names;
    }

    std::string Obstacle(const char* path) {
        const SDiscMap map = Map();
        return map.places.at(PlaceOf(map, path)).obstacle;
    }

    /// Makes the partition end so many sectors before the closing anchor, or behind it.
    void EndPartitionEarlier(int sectors) {
        for (const std::uint32_t sector : {34U, 50U}) {
            const std::size_t at = std::size_t{sector} * 2048;
            test::Write32(m_image.m_bytes, at + 192,
                          test::Read32(m_built.bytes, at + 192) - static_cast<std::uint32_t>(sectors));
            test::WriteUdfTag(m_image.m_bytes, at, 5, 512, sector);
        }
    }

    using Names = std::vector<std::string>;
};

TEST_F(DiscMapOfUdf, EmptyFilesBelongTogetherByTheirNames) {
    Build({{"DIR./A-B1.", {}}, {"C@2.D", {}}});
    test::ReplaceUdf(m_image.m_bytes, {{"dir/a b1"}, {"c{2.d"}});
    const SDiscMap map = Map();
    EXPECT_EQ(UdfNames(map, "DIR./A-B1."), Names{"dir/a b1"});
    EXPECT_EQ(UdfNames(map, "C@2.D"), Names{"c{2.d"});
    Build({{"F1", {}}, {"F2", {}}});
    test::ReplaceUdf(m_image.m_bytes, {{"F2"}, {"F1"}});
    EXPECT_EQ(UdfNames(Map(), "F1"), Names{"F1"}) << "digits count";
}

TEST_F(DiscMapOfUdf, EmptyFilesWhoseNamesDoNotTellThemCannotBeChanged) {
    const std::string obstacle =
        "is empty, and its Joliet or UDF record cannot be identified among those of other empty files";
    Build({{"A", {}}, {"B", {}}});
    test::ReplaceUdf(m_image.m_bytes, {{"A"}, {"OTHER"}});
    EXPECT_EQ(Obstacle("A"), "");
    EXPECT_EQ(Obstacle("B"), obstacle);
    test::ReplaceUdf(m_image.m_bytes, {{"OTHER"}});
    EXPECT_EQ(Obstacle("A"), obstacle);
    EXPECT_EQ(Obstacle("B"), obstacle);
    test::ReplaceUdf(m_image.m_bytes, {{"A"}});
    EXPECT_EQ(Obstacle("A"), "");
    EXPECT_EQ(Obstacle("B"), "") << "UDF does not have it";
    Build({{"A", {}}});
    test::ReplaceUdf(m_image.m_bytes, {{"OTHER"}});
    EXPECT_EQ(UdfNames(Map(), "A"), Names{"OTHER"}) << "there is only one on either side";
}

TEST_F(DiscMapOfUdf, ContentInAFileEntryBelongsToTheFileOfTheSameNameAndLength) {
    Build({{"A.BIN", test::RandomBytes(1000, 1)}, {"B.BIN", test::RandomBytes(100, 2)}});
    const auto embedded = [](std::size_t size) {
        return test::SUdfFileDescription{"A.BIN", {}, test::EUdfAllocation::Embedded, Bytes(size, 1)};
    };
    test::ReplaceUdf(m_image.m_bytes, {embedded(1000)});
    EXPECT_EQ(UdfNames(Map(), "A.BIN"), Names{"A.BIN"});
    const test::SBuiltUdf udf = test::ReplaceUdf(m_image.m_bytes, {embedded(999)});
    EXPECT_EQ(Refusal(), "A.BIN: ISO 9660 records 1000 bytes at sector " + std::to_string(SectorOf("\\A.BIN")) +
                             ", UDF 999 bytes at sector " + std::to_string(udf.entries.at("A.BIN")));
}

TEST_F(DiscMapOfUdf, SectorsOfFilesThatOnlyUdfHasAreOccupied) {
    Build({{"A.BIN", test::RandomBytes(1000, 1)}});
    const std::uint32_t sector = SectorOf("\\A.BIN") + 3;
    test::ReplaceUdf(m_image.m_bytes, {{"HIDDEN.BIN", {{sector, 2049}}}});
    const SDiscMap map = Map();
    EXPECT_TRUE(map.occupied.IsFree(sector - 2, sector));
    EXPECT_FALSE(map.occupied.IsFree(sector, sector + 1));
    EXPECT_FALSE(map.occupied.IsFree(sector + 1, sector + 2));
    EXPECT_TRUE(map.occupied.IsFree(sector + 2, sector + 3));
    EXPECT_EQ(map.places.size(), 1U);
}

TEST_F(DiscMapOfUdf, SeveralExtentsAreThoseOfUdf) {
    for (const std::uint32_t between : {0U, 1U}) {
        Build({{"A.BIN", test::RandomBytes(4096, 1)}, {"B.BIN", test::RandomBytes(3000, 2), between}});
        // B becomes the second extent of A. UDF joins adjacent extents.
        m_image.m_bytes[RecordOf("\\A.BIN") + 25] = 0x80;
        m_image.m_bytes[RecordOf("\\B.BIN") + 33] = 'A';
        const std::uint32_t first = SectorOf("\\A.BIN");
        test::ReplaceUdf(m_image.m_bytes, {{"A.BIN", {{first, 4096}, {SectorOf("\\B.BIN"), 3000}}}});
        EXPECT_EQ(UdfNames(Map(), "A.BIN"), Names{"A.BIN"});
        EXPECT_EQ(Map().places.at(0).extents.size(), 2U);
        test::ReplaceUdf(m_image.m_bytes, {{"A.BIN", {{first, 4096}, {SectorOf("\\B.BIN") + 3, 3000}}}});
        EXPECT_TRUE(Refusal().starts_with("A.BIN: ISO 9660 records 7096 bytes at sector ")) << Refusal();
    }
}

TEST_F(DiscMapOfUdf, AVolumeThatCannotBeReadIsRefusedOrAWarning) {
    Build({{"A.BIN", test::RandomBytes(1000, 1)}});
    m_image.m_bytes[std::size_t{m_built.udf.entries.at("")} * 2048 + 60] ^= 1U;
    EXPECT_TRUE(Refusal().starts_with("the UDF file entry of \"/\"")) << Refusal();
    const SDiscMap map = Map(EMapRule::ReachableOnly);
    EXPECT_EQ(map.udf, std::nullopt);
    ASSERT_EQ(map.warnings.size(), 1U);
    EXPECT_EQ(map.warnings[0],
              "The UDF volume cannot be read (" + Refusal() + "): readers that prefer it will not find the files");
}

TEST_F(DiscMapOfUdf, WithoutAClosingAnchorNothingClosesIt) {
    m_description.anchorAtEnd = false;
    Build({{"A.BIN", test::RandomBytes(1000, 1)}});
    EXPECT_EQ(Map().closingSector, Map().Sectors());
    // Unless it is a CD with a postgap.
    m_image.m_bytes[33792] = 'C';
    m_image.m_bytes.resize(m_image.m_bytes.size() + std::size_t{150} * 2048);
    EXPECT_EQ(Map().closingSector, Map().Sectors() - 150);
}

TEST_F(DiscMapOfUdf, FreeSectorsBetweenThePartitionAndTheClosingAnchorCloseIt) {
    Build({{"A.BIN", test::RandomBytes(1000, 1)}});
    test::ReplaceUdf(m_image.m_bytes, {});
    const std::uint32_t anchor = Map().Sectors() - 1;
    EndPartitionEarlier(6);
    EXPECT_EQ(Map().closingSector, anchor - 6);
    test::SetRecord(m_image.m_bytes, RecordOf("\\A.BIN"), anchor - 3, 1000);
    EXPECT_EQ(Map().closingSector, anchor) << "a file lies between them";
    EndPartitionEarlier(-1);
    EXPECT_EQ(Map().closingSector, anchor) << "it counts the anchor";
}

TEST_F(DiscMapOfUdf, OnlySoManySectorsCloseIt) {
    Build({{"A.BIN", test::RandomBytes(1000, 1)}, {"B.BIN", Bytes(std::size_t{5000} * 2048)}});
    test::ReplaceUdf(m_image.m_bytes, {});
    test::SetRecord(m_image.m_bytes, RecordOf("\\B.BIN"), SectorOf("\\A.BIN") + 1, 1);
    const std::uint32_t sectors = Map().Sectors();
    EndPartitionEarlier(4095);
    EXPECT_EQ(Map().closingSector, sectors - 4096);
    EndPartitionEarlier(4096);
    EXPECT_EQ(Map().closingSector, sectors);
}

TEST_F(DiscMap, RefusesADirectoryOfTwoLengths) {
    const test::SBuiltDirectory& folder = m_built.directories[1];
    test::SetRecord(m_image.m_bytes, std::size_t{folder.sector} * 2048, folder.sector, 2 * folder.size);
    EXPECT_EQ(Refusal(), "DIR/: the directory at sector " + std::to_string(folder.sector) + " has two lengths");
}

TEST_F(DiscMap, RefusesAFileWithoutItsLastExtent) {
    m_image.m_bytes[RecordOf("\\Z.BIN") + 25] = 0x80;
    EXPECT_EQ(Refusal(), "Z.BIN: its last extent is missing") << "at the end of the directory";
    m_image.m_bytes = m_built.bytes;
    m_image.m_bytes[RecordOf("\\A.BIN") + 25] = 0x80;
    EXPECT_EQ(Refusal(), "A.BIN: its last extent is missing") << "before another file";
}

TEST_F(DiscMap, RefusesAUdfFileOfAnotherPlaceOrLength) {
    m_description.kind = EImageKind::Dvd;
    m_description.udf = test::EUdf::Volume;
    m_description.tailSectors = 5;
    Build();
    EXPECT_EQ(Map().places.at(PlaceOf(Map(), "A.BIN")).udfFiles.size(), 1U);
    const std::uint32_t old = m_built.File("\\A.BIN").sector;
    const std::uint32_t other = m_built.File("\\Z.BIN").sector + 1;
    test::SetRecord(m_image.m_bytes, RecordOf("\\A.BIN"), other, 5000);
    EXPECT_EQ(Refusal(), "A.BIN: ISO 9660 records 5000 bytes at sector " + std::to_string(other) +
                             ", UDF 5000 bytes at sector " + std::to_string(old));
    test::SetRecord(m_image.m_bytes, RecordOf("\\A.BIN"), old, 4999);
    EXPECT_EQ(Refusal(), "A.BIN: ISO 9660 records 4999 bytes at sector " + std::to_string(old) +
                             ", UDF 5000 bytes at sector " + std::to_string(old));
}

TEST_F(DiscMap, RefusesAFileBeyondTheImage) {
    test::SetRecord(m_image.m_bytes, RecordOf("\\Z.BIN"), Map().Sectors(), 1);
    EXPECT_TRUE(Refusal().starts_with("Z.BIN: its 1 bytes at sector ")) << Refusal();
    test::SetRecord(m_image.m_bytes, RecordOf("\\Z.BIN"), 0xFFFFFFFF, 0xFFFFFFFF);
    EXPECT_TRUE(Refusal().starts_with("Z.BIN: its 4294967295 bytes at sector 4294967295")) << Refusal();
}

TEST_F(DiscMap, RefusesOverlaps) {
    const std::uint32_t sector = m_built.File("\\A.BIN").sector;
    test::SetRecord(m_image.m_bytes, RecordOf("\\Z.BIN"), sector + 2, 10);
    EXPECT_TRUE(Refusal().find("overlap Z.BIN") != std::string::npos || Refusal().starts_with("Z.BIN")) << Refusal();
    test::SetRecord(m_image.m_bytes, RecordOf("\\Z.BIN"), sector, 10);
    EXPECT_TRUE(Refusal().find("is not the same file") != std::string::npos) << Refusal();
    test::SetRecord(m_image.m_bytes, RecordOf("\\Z.BIN"), m_built.directories[1].sector, 10);
    EXPECT_TRUE(Refusal().find("Z.BIN: its sectors") != std::string::npos) << Refusal();
}

TEST_F(DiscMap, RefusesFilesThatShareTheirFirstExtentOnly) {
    m_description.files = {
        {"A.BIN", Bytes(2048, 1)}, {"B.BIN", Bytes(100, 2)}, {"C.BIN", Bytes(2048, 3)}, {"D.BIN", Bytes(100, 4)}};
    Build();
    // The second extents of A and C.
    m_image.m_bytes[RecordOf("\\A.BIN") + 25] = m_image.m_bytes[RecordOf("\\C.BIN") + 25] = 0x80;
    m_image.m_bytes[RecordOf("\\B.BIN") + 33] = 'A';
    m_image.m_bytes[RecordOf("\\D.BIN") + 33] = 'C';
    const std::uint32_t sector = m_built.File("\\A.BIN").sector;
    test::SetRecord(m_image.m_bytes, RecordOf("\\C.BIN"), sector, 2048);
    EXPECT_EQ(Refusal(),
              "C.BIN: it starts at sector " + std::to_string(sector) + " like A.BIN, but is not the same file");
    test::SetRecord(m_image.m_bytes, RecordOf("\\D.BIN"), m_built.File("\\B.BIN").sector, 100);
    EXPECT_EQ(Refusal(), "not refused");
}

TEST_F(DiscMap, RefusesDirectoriesThatContainThemselves) {
    // The first records of a directory are its own and that of its parent; a third one names SUB.
    const std::size_t folder = std::size_t{m_built.directories[1].sector} * 2048;
    const std::size_t third = folder + m_image.m_bytes[folder] + m_image.m_bytes[folder + m_image.m_bytes[folder]];
    std::size_t record = third;
    while (m_image.m_bytes[record + 25] != 2) {
        record += m_image.m_bytes[record];
    }
    test::SetRecord(m_image.m_bytes, record, m_built.directories[0].sector, m_built.directories[0].size);
    EXPECT_NE(Refusal().find("contains itself"), std::string::npos) << Refusal();
}

TEST_F(DiscMap, RefusesRecordsThatDoNotFitTheirSector) {
    for (const std::uint8_t length : {std::uint8_t{255}, std::uint8_t{20}}) {
        m_image.m_bytes = m_built.bytes;
        m_image.m_bytes[RecordOf("\\Z.BIN")] = length;
        if (length == 255) {
            m_image.m_bytes[RecordOf("\\Z.BIN") + 32] = 254;  // the name
        }
        EXPECT_NE(Refusal().find("does not fit its sector"), std::string::npos) << Refusal();
    }
    m_image.m_bytes = m_built.bytes;
    m_image.m_bytes[RecordOf("\\Z.BIN") + 32] = 0;
    EXPECT_NE(Refusal().find("does not fit its sector"), std::string::npos) << "without a name: " << Refusal();
}

TEST_F(DiscMap, RefusesPathsLongerThanTheLimit) {
    std::string folder;
    for (int depth = 0; depth < 10; ++depth) {
        folder += std::string(198, 'F') + '/';
    }
    m_description.files = {{folder + "TEN_LETTER", {1}}};
    Build();
    EXPECT_EQ(Refusal(), "not refused");
    m_description.files.push_back({folder + "ELEVEN_LETT", {1}});
    Build();
    EXPECT_EQ(Refusal(), folder + "ELEVEN_LETT: the path is longer than a disc allows");
}

TEST_F(DiscMap, IgnoresWhatFollowsTheLastPossibleRecord) {
    m_description.files.clear();
    for (int i = 10; i < 60; ++i) {
        m_description.files.push_back({std::to_string(i), test::RandomBytes(1, 1)});
    }
    Build();
    const std::size_t directory = std::size_t{m_built.directories[0].sector} * 2048;
    const std::size_t last = RecordOf("\\59");
    ASSERT_GT(last + 255, directory + 2015);
    m_image.m_bytes[last] = static_cast<std::uint8_t>(directory + 2015 - last);
    m_image.m_bytes[directory + 2015] = 33;
    EXPECT_EQ(Map().places.size(), 50U);
}

TEST_F(DiscMap, RefusesOtherBlockSizesAndPathTablesBeyondTheImage) {
    m_image.m_bytes[16 * 2048 + 129] = 4;
    EXPECT_NE(Refusal().find("logical blocks of 1024 bytes"), std::string::npos) << Refusal();
    m_image.m_bytes = m_built.bytes;
    test::Write32(m_image.m_bytes, 16 * 2048 + 140, 1U << 20U);
    EXPECT_EQ(Refusal(), "the path table at sector 1048576 lies outside of the image");
}

TEST_F(DiscMap, ASupplementaryVolumeWithoutDirectories) {
    // A supplementary descriptor in place of the terminator, whose root is beyond the image.
    auto& bytes = m_image.m_bytes;
    std::copy_n(bytes.begin() + 16 * 2048, 2048, bytes.begin() + 17 * 2048);
    bytes[17 * 2048] = 2;
    std::copy_n("%/E", 3, bytes.begin() + 17 * 2048 + 88);
    test::SetRecord(bytes, 17 * 2048 + 156, 1U << 20U, 2048);
    EXPECT_NE(Refusal().find("the directory at sector 1048576"), std::string::npos) << Refusal();
    const SDiscMap map = Map(EMapRule::ReachableOnly);
    ASSERT_EQ(map.warnings.size(), 1U);
    EXPECT_TRUE(map.warnings[0].starts_with("The directories of the Joliet volume cannot be read")) << map.warnings[0];
    EXPECT_EQ(map.volumeSizes.size(), 2U);
    bytes[17 * 2048 + 88] = 0;
    const std::string warning = Map(EMapRule::ReachableOnly).warnings.at(0);
    EXPECT_TRUE(warning.starts_with("The directories of the supplementary volume cannot be read")) << warning;
}

TEST_F(DiscMap, AnEnhancedVolumeMayShareTheDirectories) {
    auto& bytes = m_image.m_bytes;
    std::copy_n(bytes.begin() + 16 * 2048, 2048, bytes.begin() + 17 * 2048);
    bytes[17 * 2048] = 2;
    const SDiscMap map = Map();
    EXPECT_EQ(map.volumeSizes.size(), 2U);
    EXPECT_EQ(map.places.at(PlaceOf(map, "A.BIN")).names.size(), 1U);
}

TEST_F(DiscMap, ReadsDirectoriesOnly) {
    m_description.files.push_back({"LARGE.BIN", Bytes(std::size_t{4} << 20U)});
    Build();
    m_image.m_bytesRead = 0;
    Map();
    EXPECT_LT(m_image.m_bytesRead, 200'000);
}

}  // namespace
}  // namespace vantrel
