// The files of UDF volumes, compared with what the builder put into them, and damaged volumes.
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

/// "path: size, sector+bytes ..."
std::string TextOf(const SUdfFile& file) {
    std::string text = file.path + (file.isFolder ? "/: " : ": ") + std::to_string(file.size);
    for (const SExtent& extent : file.extents) {
        text += ", " + std::to_string(extent.sector) + '+' + std::to_string(extent.size);
    }
    return text + (file.embedded ? " embedded" : "");
}

std::vector<std::string> FilesOf(const SUdfVolume& volume) {
    std::vector<std::string> texts;
    for (const SUdfFile& file : volume.files) {
        if (!file.isFolder) {
            texts.push_back(TextOf(file));
        }
    }
    return texts;
}

TEST(UdfVolume, AnImageWithoutItsRecognitionSequenceHasNone) {
    EXPECT_EQ(SUdfImage().Read(), std::nullopt) << "zeros";
    SUdfImage image = UdfImage(FewUdfFiles());
    image.bytes[19 * kUdfSector + 4] = 'X';
    EXPECT_EQ(image.Read(), std::nullopt);
    image.bytes[19 * kUdfSector + 4] = '0';
    image.bytes[19 * kUdfSector + 5] = '3';
    EXPECT_NE(image.Read(), std::nullopt) << "NSR03";
}

TEST(UdfVolume, TheRecognitionSequenceEndsBeforeTheFirstAnchor) {
    for (const std::size_t sector : {255U, 256U}) {
        SUdfImage image;
        for (std::size_t i = 16; i < kVolumeEnd; ++i) {
            std::copy_n("CD001", 5, image.bytes.begin() + static_cast<std::ptrdiff_t>(i * kUdfSector + 1));
        }
        std::copy_n("NSR02", 5, image.bytes.begin() + static_cast<std::ptrdiff_t>(sector * kUdfSector + 1));
        EXPECT_EQ(
            image.Refusal(),
            sector == 256 ? "" : "the image is marked as UDF, but neither sector 256 nor its end has a valid anchor");
    }
}

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

TEST(UdfVolume, KnowsWhatItsStructuresOccupy) {
    const SUdfImage image = UdfImage(FewUdfFiles());
    std::vector<std::pair<std::uint32_t, std::int64_t>> areas;
    const SUdfVolume volume = image.Read().value();
    for (const SExtent& area : volume.structures) {
        areas.emplace_back(area.sector, area.size / kSectorSize);
    }
    // The recognition sequence starts with the descriptors of ISO 9660.
    EXPECT_THAT(areas, ElementsAre(std::pair(16U, 5), std::pair(32U, 32 + 2), std::pair(256U, image.built.end - 256),
                                   std::pair(399U, 1)));
}

TEST(UdfVolume, ReadsEveryKindOfAllocation) {
    SUdfDescription description;
    description.files = {
        {"SHORT", {{300, 2048}, {301, 2048}, {303, 10}}},
        {"LONG", {{300, 2048}, {301, 2048}, {303, 10}}, EUdfAllocation::Long},
        {"EXTENDED", {{300, 5}}, EUdfAllocation::Short, {}, 0, true},
        {"LONG AND EXTENDED", {{300, 6}}, EUdfAllocation::Long, {}, 0, true},
        {"EMBEDDED", {}, EUdfAllocation::Embedded, Bytes(1800, 'x')},
        {"EMBEDDED AND EXTENDED", {}, EUdfAllocation::Embedded, Bytes(3, 'x'), 0, true},
        {"EMPTY", {}},
        {"CHAIN", {{300, 2048}, {302, 2048}, {304, 2048}, {306, 2048}, {308, 9}}, EUdfAllocation::Short, {}, 2},
        {"LONG CHAIN", {{300, 2048}, {302, 2048}, {304, 7}}, EUdfAllocation::Long, {}, 1},
    };
    EXPECT_THAT(
        FilesOf(UdfImage(description).Read().value()),
        ElementsAre("SHORT: 4106, 300+4096, 303+10", "LONG: 4106, 300+4096, 303+10", "EXTENDED: 5, 300+5",
                    "LONG AND EXTENDED: 6, 300+6", "EMBEDDED: 1800 embedded", "EMBEDDED AND EXTENDED: 3 embedded",
                    "EMPTY: 0", "CHAIN: 8201, 300+2048, 302+2048, 304+2048, 306+2048, 308+9",
                    "LONG CHAIN: 4103, 300+2048, 302+2048, 304+7"));
}

TEST(UdfVolume, AnEmptyAllocationDescriptorEndsTheList) {
    SUdfImage image = UdfImage(FewUdfFiles());
    const std::size_t entry = image.Entry("B.BIN");
    Write32(image.bytes, entry + 172, 24);
    Write32(image.bytes, entry + 184, 1U << 30U);  // no length, whatever its kind
    Write32(image.bytes, entry + 192, 2048);
    Write32(image.bytes, entry + 196, 70);
    WriteUdfTag(image.bytes, entry, 261, 176 + 24, image.built.entries.at("B.BIN") - 257);
    EXPECT_EQ(TextOf(FileIn(image.Read().value(), "B.BIN")), "B.BIN: 2049, 320+2049");
}

TEST(UdfVolume, ExtentsInAnotherPartitionAreRefused) {
    SUdfDescription description = FewUdfFiles();
    description.files[1].allocation = EUdfAllocation::Long;
    SUdfImage image = UdfImage(description);
    image.bytes[image.Entry("B.BIN") + 176 + 8] = 1;
    image.ResealEntry("B.BIN");
    EXPECT_EQ(image.Refusal(),
              "the UDF file entry of \"/B.BIN\" in sector 264: an extent is in a partition that does not exist");
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

TEST(UdfVolume, FindsItsAnchorsInAnyPlace) {
    for (const int which : {1, 2, 4, 3, 5, 6, 7}) {
        SUdfDescription description = FewUdfFiles();
        description.files.clear();
        description.start = 32 + 40;
        description.anchorAt256 = (which & 1) != 0;
        description.anchorAtEnd = (which & 2) != 0;
        description.anchor256BeforeEnd = (which & 4) != 0;
        std::vector<std::uint32_t> expected;
        for (const auto& [bit, sector] : {std::pair(4, 143U), std::pair(1, 256U), std::pair(2, 399U)}) {
            if ((which & bit) != 0) {
                expected.push_back(sector);
            }
        }
        const SUdfVolume volume = UdfImage(description).Read().value();
        EXPECT_EQ(volume.anchors, expected) << which;
        EXPECT_EQ(volume.closingAnchors, (which & 2) != 0 ? 1U : 0U);
    }
    SUdfDescription description = FewUdfFiles();
    description.anchorAt256 = description.anchorAtEnd = false;
    EXPECT_EQ(UdfImage(description).Refusal(),
              "the image is marked as UDF, but neither sector 256 nor its end has a valid anchor");
}

TEST(UdfVolume, APaddingOfAnchorsEndsIt) {
    SUdfImage image = UdfImage(FewUdfFiles());
    for (std::uint32_t sector = 390; sector < 399; ++sector) {
        std::copy_n(image.bytes.begin() + 399 * kUdfSector, 512, image.bytes.begin() + std::ptrdiff_t{sector} * 2048);
        WriteUdfTag(image.bytes, image.At(sector), 2, 512, sector);
    }
    const SUdfVolume volume = image.Read().value();
    EXPECT_EQ(volume.closingAnchors, 10U);
    EXPECT_THAT(volume.anchors, ElementsAre(256, 390, 391, 392, 393, 394, 395, 396, 397, 398, 399));
}

TEST(UdfVolume, APaddingOfAnchorsMayReachToTheFirstOne) {
    SUdfDescription description;
    description.start = 72;
    SUdfImage image = UdfImage(description);
    std::vector<std::uint32_t> expected;
    for (std::uint32_t sector = 256; sector < kVolumeEnd; ++sector) {
        std::copy_n(image.bytes.begin() + 399 * kUdfSector, 512, image.bytes.begin() + std::ptrdiff_t{sector} * 2048);
        WriteUdfTag(image.bytes, image.At(sector), 2, 512, sector);
        expected.push_back(sector);
    }
    const SUdfVolume volume = image.Read().value();
    EXPECT_EQ(volume.anchors, expected);
    EXPECT_EQ(volume.closingAnchors, kVolumeEnd - 257);
}

TEST(UdfVolume, TheEndOfAnIsoVolumeBehindTheImageHasNoAnchors) {
    SUdfImage image = UdfImage(FewUdfFiles());
    Write32(image.bytes, 16 * kUdfSector + 80, kVolumeEnd + 1);
    // An anchor 256 sectors before the last sector that the ISO 9660 volume claims.
    std::copy_n(image.bytes.begin() + 399 * kUdfSector, 512, image.bytes.begin() + 144 * kUdfSector);
    WriteUdfTag(image.bytes, image.At(144), 2, 512, 144);
    const SUdfVolume volume = image.Read().value();
    EXPECT_THAT(volume.anchors, ElementsAre(256, 399));
    EXPECT_EQ(volume.closingAnchors, 1U);
    EXPECT_THAT(volume.findings, IsEmpty());
}

TEST(UdfVolume, ACopyOfAnAnchorElsewhereIsNoDamagedAnchor) {
    SUdfImage image = UdfImage(FewUdfFiles());
    std::copy_n(image.bytes.begin() + 256 * kUdfSector, 512, image.bytes.begin() + 399 * kUdfSector);
    const SUdfVolume volume = image.Read().value();
    EXPECT_THAT(volume.anchors, ElementsAre(256));
    EXPECT_THAT(volume.findings, IsEmpty());
}

TEST(UdfVolume, TheEndOfTheIsoVolumeMayHaveTheAnchor) {
    SUdfImage image = UdfImage(FewUdfFiles());
    Write32(image.bytes, 16 * kUdfSector + 80, kVolumeEnd);
    image.bytes.resize(image.bytes.size() + 5 * kUdfSector);
    EXPECT_THAT(image.Read().value().anchors, ElementsAre(256, 399));
    EXPECT_EQ(image.Read().value().closingAnchors, 1U);
}

TEST(UdfVolume, ADamagedCopyIsAFinding) {
    const SUdfVolume sound = UdfImage(FewUdfFiles()).Read().value();
    for (const std::uint32_t sector : {34U, 35U, 50U, 51U}) {
        SUdfImage image = UdfImage(FewUdfFiles());
        image.bytes[image.At(sector) + 100] ^= 1U;
        const SUdfVolume volume = image.Read().value();
        EXPECT_EQ(FilesOf(volume), FilesOf(sound));
        EXPECT_THAT(volume.findings, ElementsAre(std::string("the ") + (sector < 48 ? "main" : "reserve") +
                                                 " UDF volume descriptor sequence: sector " + std::to_string(sector) +
                                                 ": the descriptor's CRC is wrong"));
    }
    SUdfImage image = UdfImage(FewUdfFiles());
    image.bytes[image.At(64) + 40] ^= 1U;
    EXPECT_THAT(image.Read().value().findings,
                ElementsAre("the UDF integrity descriptor in sector 64: the descriptor's CRC is wrong"));
    image = UdfImage(FewUdfFiles());
    image.bytes[image.At(399) + 20] ^= 1U;
    EXPECT_THAT(image.Read().value().findings,
                ElementsAre("the UDF anchor in sector 399: the descriptor's CRC is wrong"));
    EXPECT_THAT(image.Read().value().anchors, ElementsAre(256));
}

TEST(UdfVolume, SequencesThatDisagreeAreAFinding) {
    constexpr struct {
        std::uint32_t sector;
        std::size_t offset;
        std::uint32_t value;
        const char* what;
    } kCases[] = {{50, 188, 258, "start of the partition"},
                  {50, 192, 100, "length of the partition"},
                  {51, 252, 1, "file set descriptor"},
                  {51, 436, 65, "integrity sequence"}};
    for (const auto& changed : kCases) {
        SUdfImage image = UdfImage(FewUdfFiles());
        Write32(image.bytes, image.At(changed.sector) + changed.offset, changed.value);
        image.Reseal(image.At(changed.sector), changed.sector);
        EXPECT_THAT(image.Read().value().findings,
                    ElementsAre("the main and the reserve UDF volume descriptor sequence disagree"))
            << changed.what;
        EXPECT_EQ(FilesOf(image.Read().value()), FilesOf(UdfImage(FewUdfFiles()).Read().value())) << changed.what;
    }
}

/// An image in which a changed copy of a descriptor (2: of the partition, 3: of the logical volume) replaces the
/// descriptor of unallocated space, in both sequences.
template <typename TChange>
SUdfImage WithSecondDescriptor(std::uint32_t which, TChange change) {
    SUdfImage image = UdfImage(FewUdfFiles());
    for (const std::uint32_t sequence : {32U, 48U}) {
        const std::uint32_t sector = sequence + 4;
        std::copy_n(image.bytes.begin() + static_cast<std::ptrdiff_t>(image.At(sequence + which)), 512,
                    image.bytes.begin() + static_cast<std::ptrdiff_t>(image.At(sector)));
        change(image.bytes, image.At(sector));
        image.Reseal(image.At(sector), sector);
    }
    return image;
}

TEST(UdfVolume, OfSeveralDescriptorsTheHighestNumberPrevails) {
    // The first descriptors have the numbers 2 and 3. Of two with the same number, the later one prevails.
    for (const std::uint32_t number : {1U, 2U, 3U}) {
        const SUdfImage image = WithSecondDescriptor(2, [&](Bytes& bytes, std::size_t at) {
            Write32(bytes, at + 16, number);
            Write32(bytes, at + 192, 77);
        });
        EXPECT_EQ(image.Read().value().partitionSectors, number < 2 ? kVolumeEnd - 1 - 257 : 77) << number;
    }
    for (const std::uint32_t number : {2U, 3U, 4U}) {
        const SUdfImage image = WithSecondDescriptor(3, [&](Bytes& bytes, std::size_t at) {
            Write32(bytes, at + 16, number);
            Write32(bytes, at + 212, 512);
        });
        EXPECT_EQ(image.Refusal(), number < 3 ? "" : "UDF volumes with blocks of 512 bytes are not supported");
    }
}

TEST(UdfVolume, DescriptorsOfOtherPartitionsDoNotMatter) {
    const SUdfImage image = WithSecondDescriptor(2, [](Bytes& bytes, std::size_t at) {
        Write32(bytes, at + 16, 9);
        bytes[at + 22] = 7;
        Write32(bytes, at + 192, 77);
    });
    EXPECT_EQ(image.Read().value().partitionSectors, kVolumeEnd - 1 - 257);
}

TEST(UdfVolume, AnUnrecordedSectorEndsASequence) {
    SUdfImage image = UdfImage(FewUdfFiles());
    for (const std::uint32_t sector : {37U, 53U}) {
        std::fill_n(image.bytes.begin() + static_cast<std::ptrdiff_t>(image.At(sector)), 512, std::uint8_t{0});
    }
    EXPECT_THAT(image.Read().value().findings, IsEmpty());
    EXPECT_EQ(FilesOf(image.Read().value()).size(), 2U);
}

TEST(UdfVolume, WithoutAUsableSequenceItIsRefused) {
    SUdfImage image = UdfImage(FewUdfFiles());
    image.bytes[image.At(35) + 4] ^= 1U;
    image.bytes[image.At(50) + 12] ^= 1U;
    EXPECT_EQ(image.Refusal(),
              "the main UDF volume descriptor sequence: sector 35: the checksum of the descriptor's tag is wrong");
    image = UdfImage(FewUdfFiles());
    for (const std::uint32_t sector : {35U, 51U}) {
        WriteUdfTag(image.bytes, image.At(sector), 8, 512, sector);
    }
    EXPECT_EQ(image.Refusal(), "the main UDF volume descriptor sequence: it has no logical volume descriptor");
    image = UdfImage(FewUdfFiles());
    for (const std::uint32_t sector : {34U, 50U}) {
        WriteUdfTag(image.bytes, image.At(sector), 4, 512, sector);
    }
    EXPECT_EQ(image.Refusal(),
              "the main UDF volume descriptor sequence: it has no descriptor of the volume's partition");
}

/// An image whose sequences go on elsewhere, in this number of sectors, behind a volume descriptor pointer. There are
/// the descriptors of partition, logical volume and unallocated space, and the terminating one.
SUdfImage WithContinuedSequences(std::uint32_t sectors) {
    SUdfImage image = UdfImage(FewUdfFiles());
    for (const auto& [start, next] : {std::pair(33U, 70U), std::pair(49U, 80U)}) {
        for (std::uint32_t i = 0; i < 4; ++i) {
            const auto from = image.bytes.begin() + static_cast<std::ptrdiff_t>(image.At(start + 1 + i));
            std::copy_n(from, 2048, image.bytes.begin() + static_cast<std::ptrdiff_t>(image.At(next + i)));
            std::fill_n(from, 2048, std::uint8_t{0});
            image.Reseal(image.At(next + i), next + i);
        }
        Write32(image.bytes, image.At(start) + 20, sectors * 2048);
        Write32(image.bytes, image.At(start) + 24, next);
        WriteUdfTag(image.bytes, image.At(start), 3, 512, start);
    }
    return image;
}

TEST(UdfVolume, ASequenceGoesOnWhereItsPointerLeads) {
    for (const std::uint32_t sectors : {2U, 4U}) {
        const SUdfImage image = WithContinuedSequences(sectors);
        EXPECT_EQ(image.Refusal(), "") << sectors;
        const SUdfVolume volume = image.Read().value();
        EXPECT_EQ(FilesOf(volume), FilesOf(UdfImage(FewUdfFiles()).Read().value()));
        EXPECT_THAT(volume.findings, IsEmpty());
        EXPECT_TRUE(std::any_of(volume.structures.begin(), volume.structures.end(), [&](const SExtent& area) {
            return area.sector == 70 && area.size == sectors * kSectorSize;
        }));
    }
    EXPECT_EQ(WithContinuedSequences(1).Refusal(),
              "the main UDF volume descriptor sequence: it has no logical volume descriptor");
}

TEST(UdfVolume, ChainsOfSequencesEnd) {
    SUdfImage image = UdfImage(FewUdfFiles());
    // Volume descriptor pointers that name their own sequence replace the descriptors of implementation use.
    for (const std::uint32_t sector : {33U, 49U}) {
        Write32(image.bytes, image.At(sector) + 20, 16 * 2048);
        Write32(image.bytes, image.At(sector) + 24, sector - 1);
        WriteUdfTag(image.bytes, image.At(sector), 3, 512, sector);
    }
    EXPECT_THAT(image.Refusal(), HasSubstr("it has no logical volume descriptor"));
    image = UdfImage(FewUdfFiles());
    Write32(image.bytes, image.At(64) + 32, 2048);
    Write32(image.bytes, image.At(64) + 36, 64);
    image.Reseal(image.At(64), 64);
    EXPECT_EQ(image.Refusal(), "");
}

/// Changes the logical volume descriptors of both sequences.
template <typename TChange>
SUdfImage WithLogicalVolume(TChange change) {
    SUdfImage image = UdfImage(FewUdfFiles());
    for (const std::uint32_t sector : {35U, 51U}) {
        change(image.bytes, image.At(sector));
        image.Reseal(image.At(sector), sector);
    }
    return image;
}

TEST(UdfVolume, OtherKindsOfVolumesAreUnsupportedByName) {
    for (const std::string name : {"*UDF Virtual Partition", "*UDF Sparable Partition", "*UDF Metadata Partition"}) {
        const SUdfImage image = WithLogicalVolume([&](Bytes& bytes, std::size_t at) {
            Write32(bytes, at + 268, 2);
            bytes[at + 446] = 2;
            bytes[at + 447] = 64;
            std::copy(name.begin(), name.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at + 451));
        });
        EXPECT_THROW(image.Read(), CUnsupportedUdf);
        EXPECT_EQ(image.Refusal(), "UDF volumes with a partition map \"" + name + "\" are not supported");
    }
    EXPECT_EQ(WithLogicalVolume([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 212, 512); }).Refusal(),
              "UDF volumes with blocks of 512 bytes are not supported");
    EXPECT_EQ(WithLogicalVolume([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 268, 0xFFFFFFFF); }).Refusal(),
              "UDF volumes of 4294967295 partitions are not supported");
    EXPECT_EQ(WithLogicalVolume([](Bytes& bytes, std::size_t at) { bytes[at + 440] = 9; }).Refusal(),
              "UDF partition maps of type 9 are not supported");
}

/// Changes the file entry of DIR/A.BIN.
template <typename TChange>
SUdfImage WithEntry(TChange change, bool isExtended = false) {
    SUdfDescription description = FewUdfFiles();
    description.files[0].isExtended = isExtended;
    SUdfImage image = UdfImage(description);
    change(image.bytes, image.Entry("DIR/A.BIN"));
    image.ResealEntry("DIR/A.BIN");
    return image;
}

TEST(UdfVolume, OtherKindsOfEntriesAreUnsupportedByName) {
    const std::string place = "the UDF file entry of \"/DIR/A.BIN\" in sector 263: ";
    const auto expect = [&](const SUdfImage& image, const std::string& reason) {
        EXPECT_THROW(image.Read(), CUnsupportedUdf) << reason;
        EXPECT_EQ(image.Refusal(), place + reason);
    };
    expect(WithEntry([](Bytes& bytes, std::size_t at) { bytes[at + 21] = 16; }),
           "entries of strategy 4100 are not supported");
    expect(WithEntry([](Bytes& bytes, std::size_t at) { bytes[at + 34] = 2; }),
           "extended allocation descriptors are not supported");
    expect(WithEntry([](Bytes& bytes, std::size_t at) { bytes[at + 179] |= 0x40U; }),
           "extents without recorded content are not supported");
    expect(WithEntry([](Bytes& bytes, std::size_t at) { bytes[at + 187] |= 0x80U; }),
           "extents without recorded content are not supported");
    expect(WithEntry([](Bytes& bytes, std::size_t at) { bytes[at + 112] = 1; }),
           "extended attributes in an entry of their own are not supported");
    expect(WithEntry([](Bytes& bytes, std::size_t at) { bytes[at + 152] = 1; }, true),
           "named streams are not supported");
}

TEST(UdfVolume, NamedStreamsOfTheVolumeAreUnsupported) {
    SUdfImage image = UdfImage(FewUdfFiles());
    Write32(image.bytes, image.At(257) + 464, 2048);
    image.Reseal(image.At(257), 0);
    EXPECT_THROW(image.Read(), CUnsupportedUdf);
    EXPECT_EQ(image.Refusal(),
              "the UDF file set descriptor in block 0 of the partition: named streams are not supported");
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

TEST(UdfVolume, EntriesThatContradictThemselvesAreRefused) {
    const std::string place = "the UDF file entry of \"/DIR/A.BIN\" in sector 263: ";
    const auto refusal = [&](auto change) {
        const SUdfImage image = WithEntry(change);
        EXPECT_EQ(image.Refusal().substr(0, place.size()), place);
        return image.Refusal().substr(std::min(place.size(), image.Refusal().size()));
    };
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { bytes[at + 34] = 7; }),
              "allocation descriptors of kind 7 do not exist");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 168, 1857); }),
              "the entry is longer than its block");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 168, 0xFFFFFFF8); }),
              "the entry is longer than its block");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 172, 0xFFFFFFF8); }),
              "the entry is longer than its block");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write64(bytes, at + 56, 1ULL << 63U); }),
              "a length of 9223372036854775808 bytes is impossible");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write64(bytes, at + 56, 5097 + 2048); }),
              "its length is 7145 bytes, its extents have 5096");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write64(bytes, at + 56, 4096); }),
              "its length is 4096 bytes, its extents have 5096");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 176, 4095); }),
              "an extent that is not the last one ends within a sector");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 180, 141); }),
              "its content, from sector 398 on, is outside the partition");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 180, 0xFFFFFFFF); }),
              "its content, from sector 4294967552 on, is outside the partition");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { bytes[at + 34] = 3; }),
              "its length is not that of the embedded content");
    EXPECT_EQ(refusal([](Bytes& bytes, std::size_t at) { bytes[at + 27] = 4; }),
              "it is the entry of a folder, its name is that of a file");
    SUdfImage image = UdfImage(FewUdfFiles());
    image.bytes[image.Entry("DIR") + 27] = 5;
    image.ResealEntry("DIR");
    EXPECT_THAT(image.Refusal(), HasSubstr("it is the entry of a file, its name is that of a folder"));
}

TEST(UdfVolume, ALastExtentOfWholeSectorsIsCutAtTheFilesEnd) {
    const SUdfImage image = WithEntry([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 184, 2048); });
    EXPECT_EQ(TextOf(FileIn(image.Read().value(), "DIR/A.BIN")), "DIR/A.BIN: 5096, 300+4096, 310+1000");
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

TEST(UdfVolume, ContinuationsThatFormACircleAreRefused) {
    SUdfDescription description;
    description.files = {{"A", {{300, 2048}, {302, 2048}, {304, 2048}}, EUdfAllocation::Short, {}, 1}};
    SUdfImage image = UdfImage(description);
    const std::size_t second = image.At(261);
    ASSERT_EQ(image.bytes[second] | image.bytes[second + 1] << 8U, 258);
    Write32(image.bytes, second + 24, 3U << 30U | 2048U);
    Write32(image.bytes, second + 28, 3);
    image.Reseal(second, 4);
    EXPECT_EQ(image.Refusal(),
              "the UDF file entry of \"/A\" in sector 263: it belongs to something else or is outside "
              "the image");
    image = UdfImage(description);
    image.bytes[second + 20] ^= 1U;
    EXPECT_EQ(
        image.Refusal(),
        "the UDF file entry of \"/A\" in sector 263: the continuation of its extents: the descriptor's CRC is wrong");
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
