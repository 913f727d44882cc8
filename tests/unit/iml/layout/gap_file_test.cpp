// Gap files byte for byte, and what their reader refuses.
#include "iml/layout/gap_file.h"

#include <gtest/gtest.h>

#include "iml/layout/layout_names.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

using Areas = std::vector<SImageArea>;

void ExpectAreas(const Areas& found, const Areas& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_TRUE(found[i] == expected[i]) << i << ": " << found[i].position << " " << found[i].length;
    }
}

TEST(UncoveredAreasTest, AreTheRestOfTheImage) {
    ExpectAreas(UncoveredAreas(Areas{{0, 10}, {20, 5}, {22, 1}, {24, 6}}, 40), {{10, 10}, {30, 10}});
    ExpectAreas(UncoveredAreas(Areas{{0, 10}, {20, 50}}, 40), {{10, 10}});
    ExpectAreas(UncoveredAreas(Areas{{0, 10}, {90, 50}}, 40), {{10, 30}});
    ExpectAreas(UncoveredAreas(Areas{{5, 0}}, 7), {{0, 5}, {5, 2}});
    ExpectAreas(UncoveredAreas(Areas{}, 7), {{0, 7}});
    ExpectAreas(UncoveredAreas(Areas{{0, 7}}, 7), {});
}

class GapFileTest : public testing::Test {
protected:
    GapFileTest() : m_image(5 * 2048 + 100) {
        m_image[2047] = 1;
        m_image[2048] = 2;
        m_image[3 * 2048 + 5] = 3;
        m_image[5 * 2048 + 99] = 4;
    }

    void Write(const Areas& uncovered) {
        WriteWhole(m_folder / "image", m_image);
        CInputFile image;
        ASSERT_TRUE(image.Open(m_folder / "image"));
        const Areas areas = AreasWithData(image, uncovered);
        COutputFile output;
        ASSERT_TRUE(output.Open(m_folder / "out.gaps", EOutputManner::CommitReplace));
        ASSERT_TRUE(WriteGapFile(image, kOrigin, areas, m_files, output));
        ASSERT_TRUE(output.Commit());
    }

    bool Reads(const Bytes& bytes) {
        WriteWhole(m_folder / "some.gaps", bytes);
        return CGapFileReader().Open(m_folder / "some.gaps");
    }

    static constexpr SGapOrigin kOrigin = {{5 * 2048 + 100, 0x89ABCDEF}, {1234, 0x10203040}, {4096, 0x50607080}};

    std::vector<SExportedFile> m_files;
    CTestFolder m_folder;
    Bytes m_image;
};

TEST_F(GapFileTest, HoldsAreasWithData) {
    m_files = {{9, {700, 5}}, {3, {0, 0}}, {3, {800, 6}}, {9, {700, 5}}};
    Write({{2000, 2000}, {3 * 2048, 2048}, {4 * 2048, 2048}, {5 * 2048, 100}});
    Bytes expected = {'I', 'M', 'L', 'G', 'A', 'P', 'S', '3'};
    expected.resize(56 + 3 * 16 + 2 * 16);
    Write64(expected, 8, 5 * 2048 + 100);
    Write32(expected, 16, 3);
    Write32(expected, 20, 0x89ABCDEF);
    Write64(expected, 24, 1234);
    Write32(expected, 32, 0x10203040);
    Write32(expected, 36, 2);
    Write64(expected, 40, 4096);
    Write32(expected, 48, 0x50607080);
    Write32(expected, 104, 3);
    Write32(expected, 108, 6);
    Write64(expected, 112, 800);
    Write32(expected, 120, 9);
    Write32(expected, 124, 5);
    Write64(expected, 128, 700);
    const Areas areas = {{2000, 2000}, {3 * 2048, 2048}, {5 * 2048, 100}};
    for (std::size_t i = 0; i < areas.size(); ++i) {
        Write64(expected, 56 + 16 * i, static_cast<std::uint64_t>(areas[i].position));
        Write64(expected, 64 + 16 * i, static_cast<std::uint64_t>(areas[i].length));
        const auto start = m_image.begin() + areas[i].position;
        expected.insert(expected.end(), start, start + areas[i].length);
    }
    EXPECT_EQ(ReadWhole(m_folder / "out.gaps"), expected);
}

TEST_F(GapFileTest, IsReadBack) {
    Write({{2000, 2000}, {5 * 2048, 100}});
    CGapFileReader reader;
    ASSERT_TRUE(reader.Open(m_folder / "out.gaps")) << reader.Problem();
    EXPECT_EQ(reader.Origin().image, kOrigin.image);
    EXPECT_EQ(reader.Origin().layout, kOrigin.layout);
    EXPECT_EQ(reader.Origin().leading, kOrigin.leading);
    ExpectAreas(reader.Areas(), {{2000, 2000}, {5 * 2048, 100}});
    Bytes data(100);
    EXPECT_EQ(reader.ReadAt(1, 0, data), 100U);
    EXPECT_EQ(data[99], 4);
    EXPECT_EQ(reader.ReadAt(0, 47, data), 100U);
    EXPECT_EQ(data[0], 1);
    EXPECT_EQ(data[1], 2);
    EXPECT_EQ(reader.ReadAt(0, 1950, data), 50U) << "an area ends where the data of the next one starts";
    EXPECT_EQ(reader.ReadAt(0, 2000, data), 0U);
}

TEST_F(GapFileTest, HoldsTheLengthOfAnImageWithoutAreas) {
    Write({{4 * 2048, 2048}});
    CGapFileReader reader;
    ASSERT_TRUE(reader.Open(m_folder / "out.gaps"));
    EXPECT_EQ(reader.Origin().image, kOrigin.image);
    EXPECT_EQ(reader.Origin().layout, kOrigin.layout);
    EXPECT_TRUE(reader.Areas().empty());
    EXPECT_EQ(ReadWhole(m_folder / "out.gaps").size(), 56U);
}

TEST_F(GapFileTest, RefusesDamagedFiles) {
    Write({{2000, 2000}, {5 * 2048, 100}});
    const Bytes whole = ReadWhole(m_folder / "out.gaps");
    EXPECT_TRUE(Reads(whole));
    for (std::size_t length = 0; length < whole.size(); length += 7) {
        EXPECT_FALSE(Reads({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)})) << length;
    }
    Bytes longer = whole;
    longer.push_back(0);
    EXPECT_FALSE(Reads(longer));
    const auto readsWith64 = [&](std::size_t offset, std::uint64_t value) {
        Bytes bytes = whole;
        Write64(bytes, offset, value);
        return Reads(bytes);
    };
    EXPECT_FALSE(readsWith64(0, 0)) << "magic";
    EXPECT_FALSE(readsWith64(8, 5 * 2048 + 99)) << "an area beyond the image";
    EXPECT_FALSE(readsWith64(8, 0x8000000000000000U)) << "a negative length of the image";
    EXPECT_FALSE(readsWith64(16, 0x89ABCDEFFFFFFFFFU)) << "a count beyond the file";
    EXPECT_FALSE(readsWith64(56, 9000)) << "overlapping areas";
    EXPECT_FALSE(readsWith64(56, 0xFFFFFFFFFFFFF000U)) << "a negative position";
    EXPECT_FALSE(readsWith64(56, 0xFFFFFFFFFFFFFFFFU)) << "position -1";
    EXPECT_FALSE(readsWith64(72, 5 * 2048 + 101)) << "an area behind the image";
    EXPECT_FALSE(readsWith64(64, 0)) << "an area without length";
    EXPECT_FALSE(readsWith64(72, 1000)) << "areas that do not ascend";
}

TEST_F(GapFileTest, FindsFilesBySectorAndLength) {
    m_files = {{3, {800, 6}}, {9, {700, 5}}, {9, {710, 4}}};
    Write({});
    CGapFileReader reader;
    ASSERT_TRUE(reader.Open(m_folder / "out.gaps"));
    ASSERT_NE(reader.FindFile(9, 710), nullptr);
    EXPECT_EQ(reader.FindFile(9, 710)->sum.crc32, 4U);
    EXPECT_EQ(reader.FindFile(9, 709), nullptr);
    EXPECT_EQ(reader.FindFile(10, 710), nullptr);
    Bytes bytes = ReadWhole(m_folder / "out.gaps");
    Write32(bytes, 56, 9);
    Write64(bytes, 64, 700);
    EXPECT_FALSE(Reads(bytes)) << "files that do not ascend";
    Write64(bytes, 64, 0);
    EXPECT_FALSE(Reads(bytes)) << "a file without length";
}

TEST_F(GapFileTest, NamesTheProblem) {
    CGapFileReader reader;
    EXPECT_FALSE(reader.Open(m_folder / "missing"));
    EXPECT_NE(reader.Problem().find(m_folder / "missing"), std::string::npos);
    WriteText(m_folder / "text", "no gaps");
    EXPECT_FALSE(reader.Open(m_folder / "text"));
    EXPECT_EQ(reader.Problem(), (m_folder / "text") + ": not a gap file");
    for (const char* const magic : {"IMLGAPS1", "IMLGAPS2"}) {
        WriteText(m_folder / "old", magic + std::string(16, '\0'));
        EXPECT_FALSE(reader.Open(m_folder / "old"));
        EXPECT_EQ(
            reader.Problem(),
            (m_folder / "old") + ": a gap file of an earlier version, without all checksums; export the image again");
    }
    WriteText(m_folder / "new", "IMLGAPS4" + std::string(80, '\0'));
    EXPECT_FALSE(reader.Open(m_folder / "new"));
    EXPECT_EQ(reader.Problem(), (m_folder / "new") + ": not a gap file");
}

TEST(LayoutNamesTest, ReplaceTheExtension) {
    EXPECT_EQ(GapPathOf("F/game.v1.iml"), "F/game.v1.gaps");
    EXPECT_EQ(LeadingPathOf("F/game.v1.iml"), "F/game.v1.ims");
}

}  // namespace
}  // namespace vantrel::test
