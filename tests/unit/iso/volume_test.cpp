// The marks and keys of images, at the positions where real discs have them.
#include "iso/volume.h"

#include <gtest/gtest.h>

#include "files/input_file.h"
#include "tests/support/image_builder.h"

namespace vantrel::test {
namespace {

class VolumeTest : public testing::Test {
protected:
    CInputFile& Image(const Bytes& bytes) {
        m_file.Close();
        WriteWhole(m_folder / "image", bytes);
        EXPECT_TRUE(m_file.Open(m_folder / "image"));
        return m_file;
    }

    CTestFolder m_folder;
    CInputFile m_file;
};

TEST_F(VolumeTest, TellsTheMarks) {
    Bytes bytes(70000);
    EXPECT_EQ(ReadImageMark(Image(bytes)), EImageMark::None);
    std::copy_n("DVD", 3, bytes.begin() + 65925);
    EXPECT_EQ(ReadImageMark(Image(bytes)), EImageMark::Dvd);
    std::copy_n("CD-", 3, bytes.begin() + 33792);
    EXPECT_EQ(ReadImageMark(Image(bytes)), EImageMark::Cd);
}

TEST_F(VolumeTest, AMarkMustBeWhole) {
    Bytes bytes(65927);
    std::copy_n("DV", 2, bytes.begin() + 65925);
    EXPECT_EQ(ReadImageMark(Image(bytes)), EImageMark::None);
    std::copy_n("CD ", 3, bytes.begin() + 33792);
    EXPECT_EQ(ReadImageMark(Image(bytes)), EImageMark::None);
    EXPECT_EQ(ReadImageMark(Image({})), EImageMark::None);
}

TEST_F(VolumeTest, ReadsFieldsAtTheirPositions) {
    Bytes bytes(40000);
    bytes[33343] = 'L';
    bytes[33792] = 'C';
    Write32(bytes, 32848, 0x89ABCDEF);
    Write32(bytes, 32900, 77);
    Write32(bytes, 32908, 18);
    Write32(bytes, 32912, 19);
    Write32(bytes, 32926, 22);
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(Image(bytes));
    EXPECT_EQ(KindByApplication(volume), ImageKind::Cd);
    EXPECT_EQ(volume.volumeSpaceSize.Value(), 0x89ABCDEFU);
    EXPECT_EQ(volume.pathTableSize.Value(), 77U);
    EXPECT_EQ(LoadLe32(volume.pathTableLocation), 18U);
    EXPECT_EQ(LoadLe32(volume.optionalPathTableLocation), 19U);
    EXPECT_EQ(volume.rootRecord.extentLocation.Value(), 22U);
}

TEST_F(VolumeTest, BytesBeyondTheImageAreZero) {
    Bytes bytes(32850, 0xFF);
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(Image(bytes));
    EXPECT_EQ(volume.volumeSpaceSize.Value(), 0xFFFFU);
    EXPECT_EQ(volume.pathTableSize.Value(), 0U);
}

TEST(ImageKindTest, ByApplicationIdentifier) {
    EXPECT_EQ(KindByApplication('L', 0), ImageKind::Dvd);
    EXPECT_EQ(KindByApplication('L', 'C'), ImageKind::Cd);
    EXPECT_EQ(KindByApplication('S', 'C'), ImageKind::Umd);
    EXPECT_EQ(KindByApplication('S', 0), ImageKind::Unknown);
    EXPECT_EQ(KindByApplication('L', 'D'), ImageKind::Unknown);
    EXPECT_EQ(KindByApplication(' ', 'C'), ImageKind::Unknown);
}

TEST(ImageKindTest, BySystemIdentifier) {
    EXPECT_EQ(KindBySystem('S', 'C'), ImageKind::Umd);
    EXPECT_EQ(KindBySystem('L', 'C'), ImageKind::Cd);
    EXPECT_EQ(KindBySystem('L', 0), ImageKind::Dvd);
    EXPECT_EQ(KindBySystem('L', 'D'), ImageKind::Dvd);
    EXPECT_EQ(KindBySystem('S', 0), ImageKind::Dvd);
    EXPECT_EQ(KindBySystem('X', 'C'), ImageKind::Dvd);
}

TEST_F(VolumeTest, TheTwoRulesReadDifferentIdentifiers) {
    Bytes bytes(40000);
    bytes[33792] = 'C';
    bytes[33343] = 'S';
    bytes[32777] = 'L';
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(Image(bytes));
    EXPECT_EQ(KindByApplication(volume), ImageKind::Umd);
    EXPECT_EQ(KindBySystem(volume), ImageKind::Cd);
}

TEST_F(VolumeTest, ReadsTheDescriptorSetUpToItsTerminator) {
    Bytes bytes(100 * std::size_t{2048});
    const auto setDescriptor = [&bytes](std::size_t sector, std::uint8_t type) {
        bytes[sector * 2048] = type;
        std::copy_n("CD001", 5, bytes.begin() + static_cast<std::ptrdiff_t>(sector * 2048 + 1));
    };
    const auto typesBySector = [&bytes, this] {
        std::vector<std::pair<std::uint32_t, int>> found;
        for (const SVolumeDescriptorAt& volume : ReadVolumeDescriptors(Image(bytes))) {
            found.emplace_back(volume.sector, volume.descriptor.type);
        }
        return found;
    };
    using Found = std::vector<std::pair<std::uint32_t, int>>;

    setDescriptor(16, 255);  // never the terminator: readers look nowhere else for the primary volume
    EXPECT_EQ(typesBySector(), (Found{{16, 255}}));
    setDescriptor(17, 0);
    setDescriptor(18, 2);
    setDescriptor(19, 255);
    setDescriptor(20, 2);
    EXPECT_EQ(typesBySector(), (Found{{16, 255}, {17, 0}, {18, 2}, {19, 255}}));
    bytes[18 * 2048 + 5] = '2';
    EXPECT_EQ(typesBySector(), (Found{{16, 255}, {17, 0}}));
    for (std::size_t sector = 16; sector < 100; ++sector) {
        setDescriptor(sector, 2);
    }
    EXPECT_EQ(typesBySector().size(), 64U);
    EXPECT_EQ(typesBySector().back().first, 79U);
}

TEST(VolumeDescriptorTest, TheEscapeSequenceTellsJoliet) {
    const std::pair<std::string_view, bool> cases[] = {{"%/@", true},  {"%/C", true},  {"%/E", true},  {"%/A", false},
                                                       {"%/F", false}, {"%?E", false}, {"$/E", false}, {"", false}};
    for (const auto& [escape, isJoliet] : cases) {
        SPrimaryVolumeDescriptor volume = {};
        std::copy(escape.begin(), escape.end(), volume.unused88.begin());
        EXPECT_EQ(IsJoliet(volume), isJoliet) << escape;
    }
}

TEST(VolumeSizeFieldTest, CountsWholeSectorsInBothByteOrders) {
    EXPECT_EQ(VolumeSizeField(0x010203 * std::int64_t{2048} + 2047),
              (std::array<std::uint8_t, 8>{3, 2, 1, 0, 0, 1, 2, 3}));
}

TEST_F(VolumeTest, TakesTheClosingAnchorThenTheFirstThenZeros) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    description.files = {{"A.BIN", Bytes(100, 1)}};
    const auto tagOf = [&](bool first, bool last) {
        description.anchorAt256 = first;
        description.anchorAtEnd = last;
        const SBuiltImage image = BuildImage(description);
        return std::pair(ReadAnchorTag(Image(image.bytes), image.volumeSectors), image);
    };
    const auto bytesAt = [](const SBuiltImage& image, std::size_t sector) {
        TagHead head = {};
        std::copy_n(image.bytes.begin() + static_cast<std::ptrdiff_t>(sector * 2048), head.size(), head.begin());
        return head;
    };
    const auto [both, bothImage] = tagOf(true, true);
    EXPECT_EQ(both, bytesAt(bothImage, bothImage.volumeSectors - 1));
    EXPECT_EQ(both[0], 2);
    const auto [first, firstImage] = tagOf(true, false);
    EXPECT_EQ(first, bytesAt(firstImage, 256));
    EXPECT_NE(first, both) << "the checksums of the two anchors differ";
    EXPECT_EQ(tagOf(false, false).first, TagHead{});
}

}  // namespace
}  // namespace vantrel::test
