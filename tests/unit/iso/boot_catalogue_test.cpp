// Entries of a boot catalogue, where "El Torito" has them.
#include "iso/boot_catalogue.h"

#include <gtest/gtest.h>

#include <string_view>

#include "tests/support/memory_source.h"

namespace vantrel {
namespace {

using test::Bytes;

constexpr std::size_t kCatalogue = 20 * 2048;

class BootCatalogue : public testing::Test {
protected:
    BootCatalogue() : m_bytes(22 * 2048) {
        Put(16 * 2048, {1, 'C', 'D', '0', '0', '1', 1});
        Put(17 * 2048, {0, 'C', 'D', '0', '0', '1', 1});
        PutText(17 * 2048 + 7, "EL TORITO SPECIFICATION");
        test::Write32(m_bytes, 17 * 2048 + 71, 20);
        Put(18 * 2048, {255, 'C', 'D', '0', '0', '1', 1});
        Put(kCatalogue, {1});
        Put(kCatalogue + 30, {0x55, 0xAA});
        PutEntry(1, 4, 100);
    }

    void Put(std::size_t position, std::initializer_list<std::uint8_t> bytes) {
        std::copy(bytes.begin(), bytes.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(position));
    }

    void PutText(std::size_t position, std::string_view text) {
        std::copy(text.begin(), text.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(position));
    }

    void PutEntry(std::size_t index, std::uint8_t count, std::uint8_t sector, std::uint8_t flags = 0) {
        Put(kCatalogue + index * 32, {0x88, flags, 0, 0, 0, 0, count, 0, sector, 0, 0, 0});
    }

    std::optional<SBootCatalogue> Read() {
        test::CMemorySource image(m_bytes);
        return ReadBootCatalogue(image);
    }

    /// Sectors of the entries.
    std::vector<std::uint32_t> Sectors() {
        std::vector<std::uint32_t> sectors;
        const SBootCatalogue catalogue = Read().value();
        for (const SBootEntry& entry : catalogue.entries) {
            sectors.push_back(entry.sector);
        }
        return sectors;
    }

    Bytes m_bytes;
};

TEST_F(BootCatalogue, TheDefaultEntry) {
    Put(kCatalogue + 38, {0x34, 0x12, 0x78, 0x56, 0x34, 0x12});
    const std::optional<SBootCatalogue> catalogue = Read();
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(catalogue->record, 17U);
    EXPECT_EQ(catalogue->sector, 20U);
    EXPECT_TRUE(catalogue->isValid);
    ASSERT_EQ(catalogue->entries.size(), 1U);
    EXPECT_EQ(catalogue->entries[0].position, static_cast<std::int64_t>(kCatalogue) + 32);
    EXPECT_EQ(catalogue->entries[0].sector, 0x12345678U);
    EXPECT_EQ(catalogue->entries[0].count, 0x1234U);
    EXPECT_EQ(catalogue->entries[0].Size(), 0x1234 * 512);
}

TEST_F(BootCatalogue, SectionsWithExtensions) {
    PutEntry(1, 4, 100, 0x20);  // the flag means nothing in the default entry
    Put(kCatalogue + 64, {0x90, 0, 2, 0});
    PutEntry(3, 4, 101, 0x20);
    PutEntry(4, 4, 102, 0x20);  // extensions
    PutEntry(5, 4, 103);
    PutEntry(6, 4, 104);
    Put(kCatalogue + 7 * 32, {0x91, 0, 1, 0});
    PutEntry(8, 4, 105);
    Put(kCatalogue + 9 * 32, {0x91, 0, 1, 0});
    PutEntry(10, 4, 106);  // behind the last section
    EXPECT_EQ(Sectors(), (std::vector<std::uint32_t>{100, 101, 104, 105}));
}

TEST_F(BootCatalogue, EndsWithTheImage) {
    Put(kCatalogue + 64, {0x91, 0, 0xFF, 0xFF});
    for (std::size_t i = 3; i < 128; ++i) {
        PutEntry(i, 4, 101, i == 127 ? 0x20 : 0);
    }
    EXPECT_EQ(Sectors().size(), 126U);
    m_bytes.resize(kCatalogue + 4 * 32);
    EXPECT_EQ(Sectors().size(), 2U);
    m_bytes.resize(kCatalogue + 63);
    EXPECT_TRUE(Sectors().empty());
    m_bytes.resize(kCatalogue + 31);
    EXPECT_FALSE(Read().value().isValid);
}

TEST_F(BootCatalogue, SectorZeroIsNoBootImage) {
    PutEntry(1, 4, 0);
    EXPECT_TRUE(Sectors().empty());
}

TEST_F(BootCatalogue, ACatalogueBeginsWithItsValidationEntry) {
    for (const std::size_t byte : {0U, 30U, 31U}) {
        const Bytes sound = m_bytes;
        m_bytes[kCatalogue + byte] = 0;
        EXPECT_FALSE(Read().value().isValid) << byte;
        EXPECT_TRUE(Sectors().empty());
        m_bytes = sound;
    }
    test::Write32(m_bytes, 17 * 2048 + 71, 0xFFFFFFFF);
    EXPECT_FALSE(Read().value().isValid);
}

TEST_F(BootCatalogue, OtherDescriptors) {
    m_bytes[17 * 2048] = 2;
    EXPECT_FALSE(Read());
    m_bytes[17 * 2048] = 0;
    PutText(17 * 2048 + 7, "OTHER");
    EXPECT_FALSE(Read());
    std::copy_n(m_bytes.begin() + 17 * 2048, 2048, m_bytes.begin() + 18 * 2048);
    PutText(18 * 2048 + 7, "EL TORITO SPECIFICATION");
    EXPECT_EQ(Read().value().record, 18U) << "the second boot record";
    m_bytes[17 * 2048] = 255;
    EXPECT_FALSE(Read()) << "behind the terminator";
    m_bytes[17 * 2048] = 0;
    m_bytes[17 * 2048 + 1] = 'X';
    EXPECT_FALSE(Read()) << "behind the descriptors";
}

TEST_F(BootCatalogue, APatchOfAnEntry) {
    const SSectorPatch patch = BootEntryPatch({1000, 1, 2}, 0x12345678, 0xABCD);
    EXPECT_EQ(patch.position, 1006);
    EXPECT_EQ(patch.bytes, (Bytes{0xCD, 0xAB, 0x78, 0x56, 0x34, 0x12}));
}

}  // namespace
}  // namespace vantrel
