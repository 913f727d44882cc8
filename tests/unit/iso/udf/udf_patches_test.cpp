// Patches of UDF volumes: what the volume says after they were applied.
#include "iso/udf/udf_patches.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/refused.h"
#include "tests/unit/iso/udf/udf_support.h"

namespace vantrel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Patches behind the bytes lengthen them, but not by gigabytes.
void Apply(Bytes& bytes, const std::vector<SSectorPatch>& patches) {
    constexpr std::size_t kLongest = 16U << 20U;
    for (const SSectorPatch& patch : patches) {
        const auto start = static_cast<std::size_t>(patch.position);
        if (start < kLongest) {
            bytes.resize(std::max(bytes.size(), start + patch.bytes.size()));
            std::copy(patch.bytes.begin(), patch.bytes.end(), bytes.begin() + patch.position);
        }
    }
}

class UdfPatchesTest : public testing::TestWithParam<std::tuple<EUdfAllocation, bool>> {
protected:
    SUdfDescription Description() const {
        SUdfDescription description = FewUdfFiles();
        description.files[0].allocation = std::get<0>(GetParam());
        description.files[0].isExtended = std::get<1>(GetParam());
        if (std::get<0>(GetParam()) == EUdfAllocation::Embedded) {
            description.files[0].embedded = Bytes(1000, 'x');
        }
        return description;
    }
};

INSTANTIATE_TEST_SUITE_P(Kinds, UdfPatchesTest,
                         testing::Combine(testing::Values(EUdfAllocation::Short, EUdfAllocation::Long,
                                                          EUdfAllocation::Embedded),
                                          testing::Bool()));

/// A file that moves and changes its size is what the builder would have written.
TEST_P(UdfPatchesTest, AnEntrySaysThePlaceAndTheSize) {
    for (const std::uint32_t size : {0U, 1U, 2048U, 2049U, 70000U}) {
        SUdfImage image = UdfImage(Description());
        const SUdfVolume volume = image.Read().value();
        CMemorySource source(image.bytes);
        Apply(image.bytes, PatchUdfFile(source, volume, FileIn(volume, "DIR/A.BIN"), 330, size));

        SUdfDescription expected = Description();
        SUdfFileDescription& file = expected.files[0];
        file.extents = size == 0 ? std::vector<SUdfExtent>() : std::vector<SUdfExtent>{{330, size}};
        file.allocation = file.allocation == EUdfAllocation::Embedded ? EUdfAllocation::Short : file.allocation;
        EXPECT_EQ(image.bytes, UdfImage(expected).bytes) << size;
    }
}

TEST_P(UdfPatchesTest, LargeFilesHaveSeveralExtents) {
    constexpr std::int64_t kGiB = std::int64_t{1} << 30U;
    constexpr std::uint32_t kLargest = (1U << 30U) - 2048;
    SUdfImage image = UdfImage(Description());
    SUdfVolume volume = image.Read().value();
    CMemorySource source(image.bytes);
    Apply(image.bytes, PatchUdfFile(source, volume, FileIn(volume, "DIR/A.BIN"), 399, 3 * kGiB + 5));
    const std::uint32_t newLast = 399 + 3 * 524288 + 1;
    Apply(image.bytes, PatchUdfLength(source, volume, newLast - 399));
    SUdfDescription expected = Description();
    SUdfFileDescription& file = expected.files[0];
    file.allocation = file.allocation == EUdfAllocation::Embedded ? EUdfAllocation::Short : file.allocation;
    file.extents = {{399, kLargest}, {399 + 524287, kLargest}, {399 + 2 * 524287, kLargest}, {399 + 3 * 524287, 6149}};
    const SUdfImage built = UdfImage(expected);
    EXPECT_TRUE(std::equal(built.bytes.begin() + 257 * 2048, built.bytes.begin() + 399 * 2048,
                           image.bytes.begin() + 257 * 2048));
    CMemorySource grown(image.bytes, (newLast + 1) * kSectorSize);
    volume = ReadUdfVolume(grown).value();
    EXPECT_EQ(FileIn(volume, "DIR/A.BIN").size, 3 * kGiB + 5);
    ASSERT_EQ(FileIn(volume, "DIR/A.BIN").extents.size(), 1U);
    EXPECT_THAT(volume.findings, IsEmpty());
}

TEST(UdfPatches, ChangesOneEntryAtItsSector) {
    SUdfDescription description = FewUdfFiles();
    description.files.push_back({"DIR/LINK", {}});
    description.files.back().sharesEntryOf = "B.BIN";
    const SUdfImage image = UdfImage(description);
    const SUdfVolume volume = image.Read().value();
    CMemorySource source(image.bytes);
    const auto patches = PatchUdfFile(source, volume, FileIn(volume, "B.BIN"), 330, 5);
    ASSERT_EQ(patches.size(), 1U);
    EXPECT_EQ(patches[0].position, FileIn(volume, "B.BIN").entrySector * kSectorSize);
    EXPECT_EQ(patches[0].bytes.size(), 184U);
    const auto linked = PatchUdfFile(source, volume, FileIn(volume, "DIR/LINK"), 330, 5);
    EXPECT_EQ(linked[0].bytes, patches[0].bytes);
}

TEST(UdfPatches, RefusesWhatAnEntryCannotSay) {
    SUdfImage image = UdfImage(FewUdfFiles());
    // Extended attributes leave room for two allocation descriptors.
    const std::size_t entry = image.Entry("B.BIN");
    Write32(image.bytes, entry + 168, 2048 - 176 - 16);
    std::copy_n(image.bytes.begin() + static_cast<std::ptrdiff_t>(entry + 176), 8,
                image.bytes.begin() + static_cast<std::ptrdiff_t>(entry + 2048 - 16));
    WriteUdfTag(image.bytes, entry, 261, 2048 - 8, image.built.entries.at("B.BIN") - 257);
    const SUdfVolume volume = image.Read().value();
    CMemorySource source(image.bytes);
    const SUdfFile& file = FileIn(volume, "B.BIN");
    EXPECT_EQ(PatchUdfFile(source, volume, file, 330, (std::int64_t{2} << 30U) - 4096).size(), 1U);
    const auto refusal = [&](std::uint32_t sector, std::int64_t size) {
        try {
            PatchUdfFile(source, volume, file, sector, size);
            return std::string();
        } catch (const CRefused& refused) {
            return std::string(refused.what());
        }
    };
    EXPECT_EQ(refusal(330, std::int64_t{2} << 30U),
              "the UDF file entry of \"/B.BIN\" in sector 264: the entry has no room for 3 allocation descriptors");
    EXPECT_EQ(refusal(256, 1), "\"/B.BIN\" cannot be at sector 256, because the UDF partition starts at 257");
    EXPECT_EQ(refusal(0, 0), "");
}

TEST(UdfPatches, TheVolumeEndsLater) {
    for (const std::uint32_t added : {1U, 100U, 1000U}) {
        SUdfImage image = UdfImage(FewUdfFiles());
        CMemorySource source(image.bytes);
        const auto patches = PatchUdfLength(source, image.Read().value(), added);

        SUdfDescription description = FewUdfFiles();
        description.lastSector = 399 + added;
        Bytes expected = image.bytes;
        std::fill_n(expected.begin() + 399 * 2048, 2048, std::uint8_t{0});
        expected.resize((400 + added) * kUdfSector);
        WriteUdfVolume(expected, description);

        std::fill_n(image.bytes.begin() + 399 * 2048, 2048, std::uint8_t{0});
        Apply(image.bytes, patches);
        EXPECT_TRUE(image.bytes == expected) << added;
    }
    const SUdfImage image = UdfImage(FewUdfFiles());
    CMemorySource source(image.bytes);
    EXPECT_THAT(PatchUdfLength(source, image.Read().value(), 0), IsEmpty());
}

TEST(UdfPatches, AllClosingAnchorsMove) {
    SUdfImage image = UdfImage(FewUdfFiles());
    image.RepeatClosingAnchor(395);
    const SUdfVolume volume = image.Read().value();
    CMemorySource source(image.bytes);
    Apply(image.bytes, PatchUdfLength(source, volume, 2));
    EXPECT_THAT(image.Read().value().anchors, ElementsAre(256, 395, 396, 397, 398, 399, 400, 401));
    EXPECT_THAT(image.Read().value().findings, IsEmpty());
}

TEST(UdfPatches, AnAnchorThatIsNotAtTheEndStays) {
    SUdfDescription description = FewUdfFiles();
    description.anchorAtEnd = false;
    const SUdfImage image = UdfImage(description);
    CMemorySource source(image.bytes);
    for (const SSectorPatch& patch : PatchUdfLength(source, image.Read().value(), 11)) {
        EXPECT_LT(patch.position, 65 * kSectorSize);
    }
}

TEST(UdfPatches, OnlyIntegrityDescriptorsOfTheSequenceAreLengthened) {
    SUdfImage image = UdfImage(FewUdfFiles());
    // The sequence ends behind its first sector; the next one holds a copy of its descriptor.
    for (const std::uint32_t sector : {35U, 51U}) {
        Write32(image.bytes, image.At(sector) + 432, 2048);
        image.Reseal(image.At(sector), sector);
    }
    std::copy_n(image.bytes.begin() + 64 * kUdfSector, 512, image.bytes.begin() + 65 * kUdfSector);
    image.Reseal(image.At(65), 65);
    CMemorySource source(image.bytes);
    std::vector<std::int64_t> sectors;
    for (const SSectorPatch& patch : PatchUdfLength(source, image.Read().value(), 11)) {
        sectors.push_back(patch.position / kSectorSize);
    }
    EXPECT_THAT(sectors, ElementsAre(34, 50, 64, 410));
}

TEST(UdfPatches, AVolumeThatCanNoLongerBeReadIsNotLengthened) {
    SUdfImage image = UdfImage(FewUdfFiles());
    const SUdfVolume volume = image.Read().value();
    CMemorySource source(Bytes(image.bytes.size()));
    EXPECT_THROW(PatchUdfLength(source, volume, 11), CRefused);
}

TEST(UdfPatches, VolumesWithTablesOfTheirSpaceStayAsLong) {
    SUdfImage image = UdfImage(FewUdfFiles());
    for (const std::uint32_t sector : {34U, 50U}) {
        Write32(image.bytes, image.At(sector) + 64, 2048);  // unallocated space bitmap
        Write32(image.bytes, image.At(sector) + 68, 20);
        image.Reseal(image.At(sector), sector);
    }
    const SUdfVolume volume = image.Read().value();
    CMemorySource source(image.bytes);
    EXPECT_THROW(PatchUdfLength(source, volume, 11), CRefused);
    EXPECT_THAT(volume.structures, testing::Contains(testing::Field(&SExtent::sector, 277U)));
}

}  // namespace
}  // namespace vantrel::test
