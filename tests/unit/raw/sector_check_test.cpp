// The check of raw sectors, compared with an independent check that works bit by bit.
#include "raw/sector_check.h"

#include <gtest/gtest.h>

#include "files/byte_order.h"
#include "raw/edc.h"
#include "raw/sector.h"
#include "tests/support/raw_sector_check.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using Sector = std::array<std::uint8_t, kRawSectorSize>;

Sector Encoded(ESectorMode mode, std::uint32_t number) {
    const test::Bytes data = test::RandomBytes(kUserDataSize, number);
    Sector sector = {};
    EncodeSector(mode, number, std::span<const std::uint8_t, kUserDataSize>(data), sector);
    return sector;
}

TEST(SectorCheck, EncodedSectorsPass) {
    for (const std::uint32_t number : {0U, 1U, 74U, 75U, 4499U, 333'000U}) {
        EXPECT_FALSE(CheckSector(Encoded(ESectorMode::Mode1, number), number).Any());
        EXPECT_FALSE(CheckSector(Encoded(ESectorMode::Mode2Form1, number), number).Any());
        EXPECT_EQ(NumberOfSector(Encoded(ESectorMode::Mode1, number)), number);
    }
    EXPECT_TRUE(CheckSector(Encoded(ESectorMode::Mode1, 5), 6).address);
}

TEST(SectorCheck, FindsTheEncodedUserData) {
    for (const ESectorMode mode : {ESectorMode::Mode1, ESectorMode::Mode2Form1}) {
        const Sector sector = Encoded(mode, 9);
        const auto data = UserDataOf(sector);
        EXPECT_EQ(test::Bytes(data.begin(), data.end()), test::RandomBytes(kUserDataSize, 9));
    }
}

TEST(SectorCheck, AgreesWithTheIndependentCheckOnEveryWrongByte) {
    for (const ESectorMode mode : {ESectorMode::Mode1, ESectorMode::Mode2Form1}) {
        const Sector good = Encoded(mode, 7);
        for (std::size_t i = 0; i < good.size(); ++i) {
            Sector bad = good;
            bad[i] ^= 0x81;
            EXPECT_EQ(CheckSector(bad, 7).Any(), !test::FaultOfRawSector(bad, 7).empty()) << i;
        }
    }
}

TEST(SectorCheck, AcceptsForm2WithoutEdc) {
    Sector sector = Encoded(ESectorMode::Mode2Form1, 0);
    sector[kSubHeaderOffset + 2] |= 0x20;
    sector[kSubHeaderOffset + 6] |= 0x20;
    EXPECT_EQ(KindOfSector(sector), ESectorKind::Mode2Form2);
    EXPECT_TRUE(CheckSector(sector, 0).edc) << "these bytes are not the EDC of the longer data";
    std::fill(sector.end() - 4, sector.end(), 0);
    EXPECT_FALSE(CheckSector(sector, 0).Any());
}

TEST(SectorCheck, AcceptsForm2WithItsEdc) {
    constexpr std::size_t kForm2EdcOffset = 2348;
    Sector sector = Encoded(ESectorMode::Mode2Form1, 0);
    sector[kSubHeaderOffset + 2] = sector[kSubHeaderOffset + 6] = 0x20;
    const std::uint32_t edc = EdcOf(std::span(sector).subspan(kSubHeaderOffset, kForm2EdcOffset - kSubHeaderOffset));
    std::ranges::copy(Le32(edc), sector.begin() + kForm2EdcOffset);
    EXPECT_FALSE(CheckUserData(sector).edc);
    sector[kForm2EdcOffset] ^= 1;
    EXPECT_EQ(TextOf(CheckUserData(sector)), "wrong EDC; 2324 bytes of Form 2 data");
}

TEST(SectorCheck, OnlyForm2DataBeyondAnImageSectorIsReported) {
    Sector sector = {};
    EncodeSector(ESectorMode::Mode2Form1, 0, std::array<std::uint8_t, kUserDataSize>{}, sector);
    sector[kSubHeaderOffset + 2] = sector[kSubHeaderOffset + 6] = 0x20;
    std::fill(sector.begin() + kForm1EdcOffset, sector.end(), 0);
    sector[kForm1EdcOffset - 1] = 1;
    EXPECT_FALSE(CheckUserData(sector).Any());
    for (const std::size_t offset : {kForm1EdcOffset, std::size_t{2347}}) {
        Sector full = sector;
        full[offset] = 1;
        EXPECT_TRUE(CheckUserData(full).longData);
        EXPECT_EQ(TextOf(CheckUserData(full)), "2324 bytes of Form 2 data");
        EXPECT_FALSE(CheckSector(full, 0).Any()) << "the sector itself is correct";
    }
}

TEST(SectorCheck, UserDataDoesNotDependOnAddressAndParity) {
    Sector sector = Encoded(ESectorMode::Mode2Form1, 5);
    sector[kAddressOffset] ^= 1;
    sector[kPParityOffset] ^= 1;
    EXPECT_FALSE(CheckUserData(sector).Any());
    EXPECT_EQ(TextOf(CheckSector(sector, 5)), "wrong address, parity");
}

TEST(SectorCheck, ASectorWithoutSyncFieldIsAudio) {
    Sector sector = Encoded(ESectorMode::Mode1, 0);
    sector[0] = sector[11] = 1;
    EXPECT_EQ(KindOfSector(sector), ESectorKind::Mode1) << "two wrong bytes";
    EXPECT_TRUE(CheckUserData(sector).sync);
    sector[5] = 1;
    for (const Sector& audio : {sector, Sector{}}) {
        EXPECT_EQ(KindOfSector(audio), ESectorKind::Audio);
        EXPECT_EQ(CheckSector(audio, 0), SSectorFaults{.audio = true});
        EXPECT_EQ(TextOf(CheckUserData(audio)), "no data sector, perhaps audio");
    }
}

TEST(SectorCheck, ReportsOtherModes) {
    Sector sector = Encoded(ESectorMode::Mode2Form1, 0);
    sector[kModeOffset] = 0;
    EXPECT_EQ(KindOfSector(sector), ESectorKind::Other);
    EXPECT_TRUE(CheckSector(sector, 0).kind);
    sector[kModeOffset] = 2;
    sector[kSubHeaderOffset] = 1;
    EXPECT_EQ(KindOfSector(sector), ESectorKind::Other) << "the copies of the sub-header differ";
}

}  // namespace
}  // namespace vantrel
