// Records of directories, written out by hand: where they end, and what is not believed.
#include "iso/directory_reader.h"

#include <gtest/gtest.h>

#include "files/input_file.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kDirectory = 2;

class DirectoryReaderTest : public testing::Test {
protected:
    DirectoryReaderTest() : m_bytes(8 * 2048) {}

    /// Writes a record and gives the position behind it.
    std::size_t Put(std::size_t at, const std::string& name, std::uint32_t extent, std::uint32_t size,
                    std::uint8_t length = 0) {
        const auto natural = static_cast<std::uint8_t>(33 + name.size() + (name.size() % 2 == 0 ? 1 : 0));
        m_bytes[at] = length == 0 ? natural : length;
        Write32(m_bytes, at + 2, extent);
        Write32(m_bytes, at + 10, size);
        m_bytes[at + 32] = static_cast<std::uint8_t>(name.size());
        std::copy(name.begin(), name.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(at + 33));
        return at + natural;
    }

    std::vector<std::string> NamesAt(std::uint32_t extent) {
        WriteWhole(m_folder / "image", m_bytes);
        CInputFile image;
        EXPECT_TRUE(image.Open(m_folder / "image"));
        CDirectoryReader reader(image);
        std::vector<std::string> names;
        reader.Visit(
            extent, [&](const SDirectoryEntry& entry) { names.emplace_back(entry.name); }, [this] { ++m_reads; });
        return names;
    }

    CTestFolder m_folder;
    Bytes m_bytes;
    int m_reads = 0;
};

TEST_F(DirectoryReaderTest, VisitsEveryRecordOfEverySector) {
    std::size_t at = Put(kDirectory * 2048, ".", 2, 2 * 2048);
    at = Put(at, "FIRST", 5, 1);
    Put(3 * 2048, "SECOND", 6, 1);
    EXPECT_EQ(NamesAt(2), (std::vector<std::string>{".", "FIRST", "SECOND"}));
    EXPECT_EQ(m_reads, 5) << "two sectors and three records";
}

TEST_F(DirectoryReaderTest, LengthRoundsUpToSectors) {
    Put(kDirectory * 2048, ".", 2, 2049);
    Put(3 * 2048, "SECOND", 6, 1);
    Put(4 * 2048, "FOREIGN", 6, 1);
    EXPECT_EQ(NamesAt(2), (std::vector<std::string>{".", "SECOND"}));
}

TEST_F(DirectoryReaderTest, ARecordMayStartAtTheLastPossibleByteOnly) {
    std::size_t at = Put(kDirectory * 2048, ".", 2, 2048);
    while (at + 2 * 100 < kDirectory * 2048 + 2014) {
        at = Put(at, std::string(67, 'A'), 5, 1);
    }
    const std::size_t rest = kDirectory * 2048 + 2014 - at;
    at = Put(at, std::string(rest - 34, 'B'), 5, 1);
    ASSERT_EQ(at, kDirectory * 2048 + 2014);
    Put(at, "Z", 5, 1);
    EXPECT_EQ(NamesAt(2).back(), "Z");
}

TEST_F(DirectoryReaderTest, NoRecordStartsBehindTheLastPossibleByte) {
    constexpr std::size_t kEnd = kDirectory * 2048 + 2015;
    std::size_t at = Put(kDirectory * 2048, ".", 2, 2048);
    while (at + 2 * 100 < kEnd) {
        at = Put(at, std::string(67, 'A'), 5, 1);
    }
    Put(at, "LAST", 5, 1, static_cast<std::uint8_t>(kEnd - at));
    Put(kEnd, "", 5, 1, 33);  // would end with the sector
    EXPECT_EQ(NamesAt(2).back(), "LAST");
}

TEST_F(DirectoryReaderTest, ARecordLongerThanItsSectorEndsIt) {
    std::size_t at = Put(kDirectory * 2048, ".", 2, 2048);
    while (at < kDirectory * 2048 + 1900) {
        at = Put(at, std::string(67, 'A'), 5, 1);
    }
    Put(at, "B", 5, 1, 255);
    for (const std::string& name : NamesAt(2)) {
        EXPECT_NE(name, "B");
    }
}

TEST_F(DirectoryReaderTest, ANameLongerThanItsRecordEndsTheSector) {
    const std::size_t at = Put(kDirectory * 2048, ".", 2, 2048);
    Put(at, "LONGNAME", 5, 1, 36);
    EXPECT_EQ(NamesAt(2), (std::vector<std::string>{"."}));
}

TEST_F(DirectoryReaderTest, ARecordShorterThanItsFixedPartEndsTheSector) {
    const std::size_t at = Put(kDirectory * 2048, ".", 2, 2048);
    Put(at, "", 5, 1, 1);
    EXPECT_EQ(NamesAt(2), (std::vector<std::string>{"."}));
}

TEST_F(DirectoryReaderTest, SectorsBeyondTheImageAreNotVisited) {
    Put(kDirectory * 2048, ".", 2, 0xFFFFFFFF);
    Put(7 * 2048, "LAST", 5, 1);
    EXPECT_EQ(NamesAt(2), (std::vector<std::string>{".", "LAST"}));
    EXPECT_TRUE(NamesAt(8).empty());
    EXPECT_TRUE(NamesAt(0xFFFFFFFF).empty());
}

TEST_F(DirectoryReaderTest, ASectorIsVisitedOnce) {
    Put(kDirectory * 2048, ".", 2, 2048);
    WriteWhole(m_folder / "image", m_bytes);
    CInputFile image;
    ASSERT_TRUE(image.Open(m_folder / "image"));
    CDirectoryReader reader(image);
    int visits = 0;
    for (int i = 0; i < 2; ++i) {
        reader.Visit(
            2, [&](const SDirectoryEntry&) { ++visits; }, [] {});
    }
    EXPECT_EQ(visits, 1);
}

TEST_F(DirectoryReaderTest, AnImageThatEndsWithinASectorIsReadToItsEnd) {
    const std::size_t at = Put(kDirectory * 2048, ".", 2, 2048);
    Put(at, "CUT", 5, 1);
    m_bytes.resize(at + 34);
    const std::vector<std::string> names = NamesAt(2);
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[1], std::string("C\0\0", 3));
}

}  // namespace
}  // namespace vantrel::test
