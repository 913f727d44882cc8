// The files and directories of UDF volumes, compared with what the builder put into them, and damaged ones.
#include "iso/udf/udf_volume.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "iso/udf/unsupported.h"
#include "tests/unit/iso/udf/udf_support.h"

namespace vantrel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(UdfVolume, HasTheFilesOfItsFolders) {
    const SUdfImage image = UdfImage(FewUdfFiles());
    const SUdfVolume volume = image.Read().value();
    ASSERT_EQ(volume.files.size(), 4U);
    EXPECT_EQ(TextOf(volume.files[0]), "/: 128, 259+128");
    EXPECT_EQ(TextOf(volume.files[1]), "DIR/: 84, 260+84");
    EXPECT_EQ(TextOf(volume.files[2]), "B.BIN: 2049, 320+2049");
    EXPECT_EQ(TextOf(volume.files[3]), "DIR/A.BIN: 5096, 300+4096, 310+1000");
    for (const SUdfFile& file : volume.files) {
        EXPECT_EQ(file.entrySector, image.built.entries.at(file.path));
    }
    EXPECT_EQ(volume.partitionStart, 257U);
    EXPECT_EQ(volume.partitionSectors, kVolumeEnd - 1 - 257);
    EXPECT_THAT(volume.findings, IsEmpty());
}

TEST(UdfVolume, ReadsNamesAndFoldersOfEveryKind) {
    for (const auto allocation : {EUdfAllocation::Short, EUdfAllocation::Long, EUdfAllocation::Embedded}) {
        SUdfDescription description;
        description.folderAllocation = allocation;
        description.folders = {"HOLLOW/INNER"};
        description.files = {
            {"caf\xC3\xA9", {{300, 1}}}, {"\xE6\x97\xA5\xE6\x9C\xAC/A B", {{301, 2}}}, {"TAB\tEND", {{302, 3}}}};
        const SUdfVolume volume = UdfImage(description).Read().value();
        EXPECT_THAT(FilesOf(volume), ElementsAre("caf\xC3\xA9: 1, 300+1", "TAB\tEND: 3, 302+3",
                                                 "\xE6\x97\xA5\xE6\x9C\xAC/A B: 2, 301+2"));
        EXPECT_TRUE(FileIn(volume, "HOLLOW/INNER").isFolder);
        EXPECT_EQ(FileIn(volume, "").embedded, allocation == EUdfAllocation::Embedded);
    }
}

TEST(UdfVolume, ReadsDirectoriesOfManySectors) {
    SUdfDescription description;
    std::vector<std::string> expected;
    for (std::uint32_t i = 0; i < 90; ++i) {
        const std::string path = "MANY/" + std::string(60 + i, 'N') + std::to_string(i);
        description.files.push_back({path, {{380, i + 1}}});
        expected.push_back(path + ": " + std::to_string(i + 1) + ", 380+" + std::to_string(i + 1));
    }
    EXPECT_EQ(FilesOf(UdfImage(description).Read().value()), expected);
}

TEST(UdfVolume, SeveralNamesOfOneEntry) {
    SUdfDescription description = FewUdfFiles();
    description.files.push_back({"DIR/LINK", {}});
    description.files.back().sharesEntryOf = "B.BIN";
    const SUdfVolume volume = UdfImage(description).Read().value();
    EXPECT_EQ(TextOf(FileIn(volume, "DIR/LINK")), "DIR/LINK: 2049, 320+2049");
    EXPECT_EQ(FileIn(volume, "DIR/LINK").entrySector, FileIn(volume, "B.BIN").entrySector);
}

TEST(UdfVolume, SkipsDeletedNames) {
    SUdfImage image = UdfImage(FewUdfFiles());
    const std::size_t record = image.At(259) + 40 + 44;  // behind the parent's and DIR's
    ASSERT_EQ(image.bytes[record + 39], 'B');
    image.bytes[record + 18] = 4;
    Write32(image.bytes, record + 20, 0);
    image.Reseal(record, 2);
    EXPECT_THAT(FilesOf(image.Read().value()), ElementsAre("DIR/A.BIN: 5096, 300+4096, 310+1000"));
}

TEST(UdfVolume, PathsLongerThanTheLimitAreUnsupported) {
    SUdfDescription description;
    description.files.push_back({std::string(1, 'A'), {}});
    for (int depth = 0; depth < 8; ++depth) {
        description.files[0].path = std::string(249, 'F') + '/' + description.files[0].path;
    }
    std::string& path = description.files[0].path;
    path.pop_back();
    path.pop_back();
    EXPECT_EQ(FilesOf(UdfImage(description).Read().value()).at(0), path + ": 0") << "1999 bytes";
    path += "AA";
    EXPECT_THROW(UdfImage(description).Read(), CUnsupportedUdf);
    EXPECT_THAT(UdfImage(description).Refusal(), HasSubstr("paths of more than 2000 bytes are not supported"));
}

/// Names of one file that has very many extents: a small image claims much memory.
TEST(UdfVolume, TheMemoryForNamesIsLimited) {
    constexpr std::uint32_t kExtents = 20'000;
    constexpr std::uint32_t kSectors = 600;
    SUdfDescription description;
    description.files.push_back({"FILE", {}, EUdfAllocation::Short, {}, 200});
    for (std::uint32_t i = 0; i < kExtents; ++i) {
        description.files[0].extents.push_back({500 + i % 2 * 2, 2048});
    }
    for (int i = 0; i < 800; ++i) {
        description.files.push_back({"NAME" + std::to_string(i), {}});
        description.files.back().sharesEntryOf = "FILE";
    }
    EXPECT_EQ(UdfImage(description, kSectors).Read().value().files.size(), 802U);
    for (int i = 0; i < 100; ++i) {
        description.files.push_back({"MORE" + std::to_string(i), {}});
        description.files.back().sharesEntryOf = "FILE";
    }
    EXPECT_THAT(UdfImage(description, kSectors).Refusal(), HasSubstr("the volume has too many names"));
}

TEST(UdfVolume, DamagedStructuresOfFilesAreRefusedByName) {
    const SUdfImage sound = UdfImage(FewUdfFiles());
    const auto refusal = [&](std::size_t at) {
        SUdfImage image = sound;
        image.bytes[at] ^= 1U;
        return image.Refusal();
    };
    EXPECT_EQ(refusal(sound.At(257) + 100),
              "the UDF file set descriptor in block 0 of the partition: the descriptor's CRC is wrong");
    EXPECT_EQ(refusal(sound.Entry("") + 12),
              "the UDF file entry of \"/\" in sector 261: the checksum of the descriptor's tag is wrong");
    EXPECT_EQ(refusal(sound.Entry("DIR/A.BIN") + 60),
              "the UDF file entry of \"/DIR/A.BIN\" in sector 263: the descriptor's CRC is wrong");
    EXPECT_EQ(refusal(sound.Entry("B.BIN")),
              "the UDF file entry of \"/B.BIN\" in sector 264: no descriptor with tag 261 is there");
    EXPECT_EQ(refusal(sound.At(260) + 40 + 39), "the UDF directory \"/DIR\": the descriptor's CRC is wrong");
    SUdfImage moved = sound;
    moved.Reseal(sound.Entry("B.BIN"), 9);
    EXPECT_THAT(moved.Refusal(),
                HasSubstr("\"/B.BIN\" in sector 264: the descriptor's tag says location 9 instead of 7"));
}

TEST(UdfVolume, DirectoriesThatContradictThemselvesAreRefused) {
    const SUdfImage sound = UdfImage(FewUdfFiles());
    const std::size_t record = sound.At(260) + 40;  // the one of A.BIN
    const auto refusal = [&](auto change) {
        SUdfImage image = sound;
        change(image.bytes, record);
        image.Reseal(record, 3);
        return image.Refusal();
    };
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { bytes[at + 38] = 7; }),
              "the UDF directory \"/DIR\": a name in it has no known character set");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { bytes[at + 28] = 1; }),
              "the UDF directory \"/DIR\": the entry of \"A.BIN\" is in a partition that does not exist");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { bytes[at + 19] = 200; }),
              "the UDF directory \"/DIR\": the directory ends within a record");
    EXPECT_EQ(
        refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 24, 5); }),
        "the UDF file entry of \"/DIR/A.BIN\" in sector 262: it is the entry of a folder, its name is that of a file");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) {
                  bytes[at + 18] = 2;
                  Write32(bytes, at + 24, 4);
              }),
              "the UDF file entry of \"/DIR/A.BIN\" in sector 261: the folder has a second name, \"/\"");
    EXPECT_THAT(refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 24, 0xFFFFFFF0); }),
                HasSubstr("it belongs to something else or is outside the image"));
    // The directory DIR in the block of the root.
    SUdfImage shared = sound;
    Write32(shared.bytes, shared.Entry("DIR") + 180, 2);
    shared.ResealEntry("DIR");
    EXPECT_EQ(shared.Refusal(),
              "the UDF directory \"/DIR\": sector 259 belongs to something else or is outside the image");
}

TEST(UdfVolume, ReadsTruncatedImagesOrRefusesThem) {
    const SUdfImage whole = UdfImage(FewUdfFiles());
    for (std::uint32_t sectors = 0; sectors < kVolumeEnd; sectors += 3) {
        SUdfImage image = whole;
        image.bytes.resize(sectors * kUdfSector);
        if (sectors > 264) {
            EXPECT_EQ(FilesOf(image.Read().value()).size(), 2U);
            const bool isShort = sectors < 399;
            EXPECT_THAT(image.Read().value().findings,
                        testing::Contains(HasSubstr("the UDF partition has the sectors 257 to 398, the image has"))
                            .Times(isShort ? 1 : 0));
        } else {
            EXPECT_TRUE(sectors < 20 || !image.Refusal().empty());
        }
    }
}

}  // namespace
}  // namespace vantrel::test
