#include "raw/sector.h"

#include <algorithm>

#include "raw/edc.h"
#include "raw/parity.h"

namespace vantrel {

namespace {

using RawSector = std::span<std::uint8_t, kRawSectorSize>;
using UserData = std::span<const std::uint8_t, kUserDataSize>;

std::uint8_t BcdOf(std::uint32_t value) {
    return static_cast<std::uint8_t>(value / 10 * 16 + value % 10);
}

template <typename Source>
void Put(RawSector sector, std::size_t offset, const Source& bytes) {
    std::copy(bytes.begin(), bytes.end(), sector.begin() + static_cast<std::ptrdiff_t>(offset));
}

void PutEdc(RawSector sector, std::size_t begin, std::size_t end) {
    const std::uint32_t edc = EdcOf(sector.subspan(begin, end - begin));
    for (std::size_t i = 0; i < kEdcSize; ++i) {
        sector[end + i] = static_cast<std::uint8_t>(edc >> (8 * i));
    }
}

void PutHeader(RawSector sector, std::uint32_t number, std::uint8_t mode) {
    Put(sector, kAddressOffset, AddressOfSector(number));
    sector[kModeOffset] = mode;
}

void PutSectorParity(RawSector sector) {
    PutParity(sector.subspan<kAddressOffset, kParityAreaSize>());
}

void EncodeMode1(std::uint32_t number, UserData userData, RawSector sector) {
    PutHeader(sector, number, kMode1);
    Put(sector, kMode1DataOffset, userData);
    PutEdc(sector, 0, kMode1EdcOffset);
    std::fill(sector.begin() + kMode1EdcOffset + kEdcSize, sector.begin() + kPParityOffset, std::uint8_t{0});
    PutSectorParity(sector);
}

void EncodeMode2Form1(std::uint32_t number, UserData userData, RawSector sector) {
    std::fill(sector.begin() + kAddressOffset, sector.begin() + kHeaderEnd, std::uint8_t{0});
    Put(sector, kSubHeaderOffset, kForm1SubHeader);
    Put(sector, kForm1DataOffset, userData);
    PutEdc(sector, kSubHeaderOffset, kForm1EdcOffset);
    PutSectorParity(sector);
    PutHeader(sector, number, kMode2);
}

}  // namespace

std::array<std::uint8_t, kAddressSize> AddressOfSector(std::uint32_t number) {
    const std::uint32_t frames = number % (kMostRawSectors + kFirstFrame) + kFirstFrame;
    const std::uint32_t seconds = frames / kFramesPerSecond;
    const std::uint32_t minutes = seconds / kSecondsPerMinute % 100;
    return {BcdOf(minutes), BcdOf(seconds % kSecondsPerMinute), BcdOf(frames % kFramesPerSecond)};
}

void EncodeSector(ESectorMode mode, std::uint32_t number, UserData userData, RawSector sector) {
    Put(sector, kSyncOffset, kSync);
    if (mode == ESectorMode::Mode1) {
        EncodeMode1(number, userData, sector);
    } else {
        EncodeMode2Form1(number, userData, sector);
    }
}

}  // namespace vantrel
