// File entries and the extents that they record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "iso/udf/udf_volume.h"
#include "iso/udf/unsupported.h"
#include "tests/unit/iso/udf/udf_support.h"

namespace vantrel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(UdfFileEntry, ReadsEveryKindOfAllocation) {
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

TEST(UdfFileEntry, AnEmptyAllocationDescriptorEndsTheList) {
    SUdfImage image = UdfImage(FewUdfFiles());
    const std::size_t entry = image.Entry("B.BIN");
    Write32(image.bytes, entry + 172, 24);
    Write32(image.bytes, entry + 184, 1U << 30U);  // no length, whatever its kind
    Write32(image.bytes, entry + 192, 2048);
    Write32(image.bytes, entry + 196, 70);
    WriteUdfTag(image.bytes, entry, 261, 176 + 24, image.built.entries.at("B.BIN") - 257);
    EXPECT_EQ(TextOf(FileIn(image.Read().value(), "B.BIN")), "B.BIN: 2049, 320+2049");
}

TEST(UdfFileEntry, ExtentsInAnotherPartitionAreRefused) {
    SUdfDescription description = FewUdfFiles();
    description.files[1].allocation = EUdfAllocation::Long;
    SUdfImage image = UdfImage(description);
    image.bytes[image.Entry("B.BIN") + 176 + 8] = 1;
    image.ResealEntry("B.BIN");
    EXPECT_EQ(image.Refusal(),
              "the UDF file entry of \"/B.BIN\" in sector 264: an extent is in a partition that does not exist");
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

TEST(UdfFileEntry, OtherKindsOfEntriesAreUnsupportedByName) {
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

TEST(UdfFileEntry, EntriesThatContradictThemselvesAreRefused) {
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

TEST(UdfFileEntry, ALastExtentOfWholeSectorsIsCutAtTheFilesEnd) {
    const SUdfImage image = WithEntry([](Bytes& bytes, std::size_t at) { Write32(bytes, at + 184, 2048); });
    EXPECT_EQ(TextOf(FileIn(image.Read().value(), "DIR/A.BIN")), "DIR/A.BIN: 5096, 300+4096, 310+1000");
}

TEST(UdfFileEntry, ContinuationsThatFormACircleAreRefused) {
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

}  // namespace
}  // namespace vantrel::test
