// Path tables byte for byte, sound and damaged.
#include "iso/path_table.h"

#include <gtest/gtest.h>

#include <optional>

#include "files/input_file.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

class PathTableTest : public testing::Test {
protected:
    void Add(const std::string& name, std::uint32_t extent, std::uint16_t parent) {
        Bytes record(8 + name.size() + name.size() % 2);
        record[0] = static_cast<std::uint8_t>(name.size());
        Write32(record, 2, extent);
        record[6] = static_cast<std::uint8_t>(parent);
        record[7] = static_cast<std::uint8_t>(parent >> 8U);
        std::copy(name.begin(), name.end(), record.begin() + 8);
        m_bytes.insert(m_bytes.end(), record.begin(), record.end());
    }
    void AddRoot() { Add(std::string(1, '\0'), 22, 1); }

    void Read() {
        Bytes image(2048, 0xEE);  // the table does not start the image
        image.insert(image.end(), m_bytes.begin(), m_bytes.end());
        WriteWhole(m_folder / "image", image);
        CInputFile file;
        ASSERT_TRUE(file.Open(m_folder / "image"));
        m_table.Read(file, 2048, m_length.value_or(static_cast<std::int64_t>(m_bytes.size())), [this] { ++m_calls; });
    }

    std::string PathOf(std::size_t index) {
        std::string path;
        return m_table.PathOf(index, 255, path) ? path : "too long";
    }

    CTestFolder m_folder;
    Bytes m_bytes;
    CPathTable m_table;
    std::optional<std::int64_t> m_length;
    int m_calls = 0;
};

TEST_F(PathTableTest, BuildsPathsFromParents) {
    AddRoot();
    Add("DATA", 23, 1);
    Add("SND", 24, 1);
    Add("DEEP", 25, 2);
    Add("ER", 26, 4);
    Read();
    ASSERT_EQ(m_table.Count(), 5U);
    EXPECT_EQ(m_calls, 5);
    EXPECT_EQ(PathOf(0), "");
    EXPECT_EQ(PathOf(1), "\\DATA");
    EXPECT_EQ(PathOf(2), "\\SND");
    EXPECT_EQ(PathOf(3), "\\DATA\\DEEP");
    EXPECT_EQ(PathOf(4), "\\DATA\\DEEP\\ER");
    EXPECT_EQ(m_table.Extent(4), 26U);
}

TEST_F(PathTableTest, EndsAtARecordWithoutName) {
    AddRoot();
    m_bytes.resize(2048);
    Add("BEHIND", 30, 1);
    Read();
    EXPECT_EQ(m_table.Count(), 1U);
}

TEST_F(PathTableTest, EndsWithTheImage) {
    AddRoot();
    Add("DATA", 23, 1);
    m_bytes.resize(m_bytes.size() - 2);
    Read();
    ASSERT_EQ(m_table.Count(), 2U);
    EXPECT_EQ(PathOf(1), std::string("\\DA__")) << "missing bytes count as zeros, which a list cannot hold";
}

TEST_F(PathTableTest, EndsAtItsLength) {
    AddRoot();
    m_length = static_cast<std::int64_t>(m_bytes.size());
    Add("BEHIND", 30, 1);
    Read();
    EXPECT_EQ(m_table.Count(), 1U);
}

TEST_F(PathTableTest, HasAtMost65535Directories) {
    AddRoot();
    for (int i = 0; i < 65536; ++i) {
        Add("D", 23, 1);
    }
    Read();
    EXPECT_EQ(m_table.Count(), 65535U);
}

TEST_F(PathTableTest, DanglingParentsBecomeTheRoot) {
    AddRoot();
    Add("ZERO", 23, 0);
    Add("FAR", 24, 9);
    Add("LAST", 25, 65535);
    Read();
    EXPECT_EQ(PathOf(1), "\\ZERO");
    EXPECT_EQ(PathOf(2), "\\FAR");
    EXPECT_EQ(PathOf(3), "\\LAST");
}

TEST_F(PathTableTest, CyclesAreBrokenOnce) {
    AddRoot();
    Add("SELF", 23, 2);
    Add("A", 24, 4);
    Add("B", 25, 3);
    Add("BELOW", 26, 4);
    Read();
    EXPECT_EQ(PathOf(1), "\\SELF");
    EXPECT_EQ(PathOf(2), "\\B\\A");
    EXPECT_EQ(PathOf(3), "\\B");
    EXPECT_EQ(PathOf(4), "\\B\\BELOW");
}

TEST_F(PathTableTest, AParentMayFollowItsChild) {
    AddRoot();
    Add("CHILD", 23, 3);
    Add("PARENT", 24, 1);
    Read();
    EXPECT_EQ(PathOf(1), "\\PARENT\\CHILD");
}

TEST_F(PathTableTest, PathsBeyondTheLimitAreNotBuilt) {
    AddRoot();
    for (std::uint16_t i = 1; i <= 40; ++i) {
        Add("ABCDEFGHI", 30, i);
    }
    Read();
    EXPECT_EQ(PathOf(25).size(), 250U);
    EXPECT_EQ(PathOf(26), "too long");
}

TEST_F(PathTableTest, OnlyCharactersThatBreakALineAreReplaced) {
    AddRoot();
    Add("A\r\nB\x1A\x01\t\x1F", 23, 1);
    Read();
    EXPECT_EQ(PathOf(1), "\\A__B_\x01\t\x1F");
}

}  // namespace
}  // namespace vantrel::test
