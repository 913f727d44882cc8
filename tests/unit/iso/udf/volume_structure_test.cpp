// What marks a UDF volume and describes it: recognition sequence, anchors, and volume descriptor sequences.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "iso/udf/udf_volume.h"
#include "iso/udf/unsupported.h"
#include "tests/unit/iso/udf/udf_support.h"

namespace vantrel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(UdfVolumeStructure, AnImageWithoutItsRecognitionSequenceHasNone) {
    EXPECT_EQ(SUdfImage().Read(), std::nullopt) << "zeros";
    SUdfImage image = UdfImage(FewUdfFiles());
    image.bytes[19 * kUdfSector + 4] = 'X';
    EXPECT_EQ(image.Read(), std::nullopt);
    image.bytes[19 * kUdfSector + 4] = '0';
    image.bytes[19 * kUdfSector + 5] = '3';
    EXPECT_NE(image.Read(), std::nullopt) << "NSR03";
}

TEST(UdfVolumeStructure, TheRecognitionSequenceEndsBeforeTheFirstAnchor) {
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

TEST(UdfVolumeStructure, KnowsWhatItsStructuresOccupy) {
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

TEST(UdfVolumeStructure, FindsItsAnchorsInAnyPlace) {
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

TEST(UdfVolumeStructure, APaddingOfAnchorsEndsIt) {
    SUdfImage image = UdfImage(FewUdfFiles());
    image.RepeatClosingAnchor(390);
    const SUdfVolume volume = image.Read().value();
    EXPECT_EQ(volume.closingAnchors, 10U);
    EXPECT_THAT(volume.anchors, ElementsAre(256, 390, 391, 392, 393, 394, 395, 396, 397, 398, 399));
}

TEST(UdfVolumeStructure, APaddingOfAnchorsMayReachToTheFirstOne) {
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

TEST(UdfVolumeStructure, TheEndOfAnIsoVolumeBehindTheImageHasNoAnchors) {
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

TEST(UdfVolumeStructure, ACopyOfAnAnchorElsewhereIsNoDamagedAnchor) {
    SUdfImage image = UdfImage(FewUdfFiles());
    std::copy_n(image.bytes.begin() + 256 * kUdfSector, 512, image.bytes.begin() + 399 * kUdfSector);
    const SUdfVolume volume = image.Read().value();
    EXPECT_THAT(volume.anchors, ElementsAre(256));
    EXPECT_THAT(volume.findings, IsEmpty());
}

TEST(UdfVolumeStructure, TheEndOfTheIsoVolumeMayHaveTheAnchor) {
    SUdfImage image = UdfImage(FewUdfFiles());
    Write32(image.bytes, 16 * kUdfSector + 80, kVolumeEnd);
    image.bytes.resize(image.bytes.size() + 5 * kUdfSector);
    EXPECT_THAT(image.Read().value().anchors, ElementsAre(256, 399));
    EXPECT_EQ(image.Read().value().closingAnchors, 1U);
}

TEST(UdfVolumeStructure, ADamagedCopyIsAFinding) {
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

TEST(UdfVolumeStructure, SequencesThatDisagreeAreAFinding) {
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

TEST(UdfVolumeStructure, OfSeveralDescriptorsTheHighestNumberPrevails) {
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

TEST(UdfVolumeStructure, DescriptorsOfOtherPartitionsDoNotMatter) {
    const SUdfImage image = WithSecondDescriptor(2, [](Bytes& bytes, std::size_t at) {
        Write32(bytes, at + 16, 9);
        bytes[at + 22] = 7;
        Write32(bytes, at + 192, 77);
    });
    EXPECT_EQ(image.Read().value().partitionSectors, kVolumeEnd - 1 - 257);
}

TEST(UdfVolumeStructure, AnUnrecordedSectorEndsASequence) {
    SUdfImage image = UdfImage(FewUdfFiles());
    for (const std::uint32_t sector : {37U, 53U}) {
        std::fill_n(image.bytes.begin() + static_cast<std::ptrdiff_t>(image.At(sector)), 512, std::uint8_t{0});
    }
    EXPECT_THAT(image.Read().value().findings, IsEmpty());
    EXPECT_EQ(FilesOf(image.Read().value()).size(), 2U);
}

TEST(UdfVolumeStructure, WithoutAUsableSequenceItIsRefused) {
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

TEST(UdfVolumeStructure, ASequenceGoesOnWhereItsPointerLeads) {
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

TEST(UdfVolumeStructure, ChainsOfSequencesEnd) {
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

TEST(UdfVolumeStructure, OtherKindsOfVolumesAreUnsupportedByName) {
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

TEST(UdfVolumeStructure, NamedStreamsOfTheVolumeAreUnsupported) {
    SUdfImage image = UdfImage(FewUdfFiles());
    Write32(image.bytes, image.At(257) + 464, 2048);
    image.Reseal(image.At(257), 0);
    EXPECT_THROW(image.Read(), CUnsupportedUdf);
    EXPECT_EQ(image.Refusal(),
              "the UDF file set descriptor in block 0 of the partition: named streams are not supported");
}

}  // namespace
}  // namespace vantrel::test
