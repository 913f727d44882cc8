// Encoding of raw sectors, checked by the published check value, an independent checker and a second implementation.
#include "raw/sector.h"

#include <gtest/gtest.h>

#include <string_view>

#include "raw/edc.h"
#include "tests/support/raw_sector_check.h"
#include "tests/support/shell.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

Bytes Encoded(ESectorMode mode, std::uint32_t number, const Bytes& data) {
    Bytes sector(kRawSectorSize, 0xCC);  // the previous contents must not matter
    EncodeSector(mode, number, std::span(data).first<kUserDataSize>(), std::span(sector).first<kRawSectorSize>());
    return sector;
}

TEST(Edc, GivesThePublishedCheckValue) {
    constexpr std::string_view kDigits = "123456789";
    const Bytes digits(kDigits.begin(), kDigits.end());
    EXPECT_EQ(EdcOf(digits), 0x6EC2EDC4U);
    EXPECT_EQ(EdcOf({}), 0U);
}

TEST(Edc, IsTheSameWithAndWithoutSpecialInstructions) {
    const Bytes bytes = test::RandomBytes(5000, 1);
    for (std::size_t length = 0; length < 400; ++length) {
        const auto part = std::span(bytes).subspan(length % 7, length);
        EXPECT_EQ(EdcOf(part), EdcByTables(part)) << length;
    }
    EXPECT_EQ(EdcOf(bytes), EdcByTables(bytes));
    EXPECT_EQ(EdcByTables(std::span(bytes).subspan(100), EdcByTables(std::span(bytes).first(100))), EdcByTables(bytes));
}

TEST(Edc, OfBytesFollowedByTheirEdcIsZero) {
    for (std::size_t length = 0; length < 70; ++length) {
        Bytes bytes = test::RandomBytes(length, length);
        const std::uint32_t edc = EdcOf(bytes);
        for (int shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<std::uint8_t>(edc >> shift));
        }
        EXPECT_EQ(EdcOf(bytes), 0U) << length;
    }
}

TEST(Sector, PassesTheIndependentCheckInEveryMode) {
    for (const ESectorMode mode : {ESectorMode::Mode1, ESectorMode::Mode2Form1}) {
        for (std::uint32_t i = 0; i < 20; ++i) {
            EXPECT_EQ(test::FaultOfRawSector(Encoded(mode, i * 4777, test::RandomBytes(kUserDataSize, i)), i * 4777),
                      "");
        }
        EXPECT_EQ(test::FaultOfRawSector(Encoded(mode, 0, Bytes(kUserDataSize, 0)), 0), "");
        EXPECT_EQ(test::FaultOfRawSector(Encoded(mode, 0, Bytes(kUserDataSize, 0xFF)), 0), "");
    }
}

TEST(Sector, CoversEveryBitOfTheData) {
    for (std::size_t bit = 0; bit < kUserDataSize * 8; bit += 37) {
        Bytes data(kUserDataSize, 0);
        data[bit / 8] = static_cast<std::uint8_t>(1U << (bit % 8));
        EXPECT_EQ(test::FaultOfRawSector(Encoded(ESectorMode::Mode2Form1, 1, data), 1), "") << bit;
    }
}

TEST(Sector, FailsTheIndependentCheckIfDamaged) {
    const Bytes sector = Encoded(ESectorMode::Mode2Form1, 5, test::RandomBytes(kUserDataSize, 1));
    for (std::size_t i = 0; i < sector.size(); i += 7) {
        Bytes damaged = sector;
        damaged[i] ^= 0x10;
        EXPECT_NE(test::FaultOfRawSector(damaged, 5), "") << i;
    }
}

TEST(Sector, AddressesStartAtTwoSeconds) {
    const auto text = [](std::uint32_t number) {
        std::string address;
        for (const std::uint8_t byte : AddressOfSector(number)) {
            address += static_cast<char>('0' + byte / 16);
            address += static_cast<char>('0' + byte % 16);
        }
        return address;
    };
    EXPECT_EQ(text(0), "000200");
    EXPECT_EQ(text(74), "000274");
    EXPECT_EQ(text(75), "000300");
    EXPECT_EQ(text(4349), "005974");
    EXPECT_EQ(text(4350), "010000");
    EXPECT_EQ(text(kMostRawSectors - 1), "995974");
    EXPECT_EQ(text(kMostRawSectors), "000000") << "the address starts again and is still BCD";
    EXPECT_EQ(text(0xFFFFFFFFU).size(), 6U);
}

void CompareWithReference(const char* mode, ESectorMode engineMode) {
    const test::CTestFolder folder;
    const Bytes image = test::RandomBytes(30 * kUserDataSize, 9);
    test::WriteWhole(folder / "image", image);
    std::string output;
    ASSERT_EQ(test::RunProgram({"python3", VANTREL_SOURCE_DIR "/tests/oracle/raw_reference.py", "expand", mode, "0",
                                folder / "image", folder / "raw"},
                               &output),
              0)
        << output;
    Bytes raw;
    for (std::uint32_t i = 0; i < 30; ++i) {
        const auto begin = image.begin() + static_cast<std::ptrdiff_t>(i * kUserDataSize);
        const Bytes sector = Encoded(engineMode, i, Bytes(begin, begin + kUserDataSize));
        raw.insert(raw.end(), sector.begin(), sector.end());
    }
    EXPECT_EQ(raw, test::ReadWhole(folder / "raw"));
}

TEST(Sector, EqualsTheSecondImplementationInBothModes) {
    CompareWithReference("1", ESectorMode::Mode1);
    CompareWithReference("2", ESectorMode::Mode2Form1);
}

}  // namespace
}  // namespace vantrel
