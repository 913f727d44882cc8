#include "raw/sector_check.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>

#include "files/byte_order.h"
#include "raw/edc.h"
#include "raw/parity.h"
#include "raw/sector.h"

namespace vantrel {

namespace {

constexpr std::size_t kSubmodeOffset = kSubHeaderOffset + 2;
constexpr std::size_t kSubHeaderCopy = 4;
constexpr std::uint8_t kForm2Bit = 0x20;
constexpr std::size_t kForm2EdcOffset = 2348;

using Sector = std::span<const std::uint8_t, kRawSectorSize>;

bool EdcMatches(Sector sector, std::size_t start, std::size_t edcOffset) {
    const std::uint32_t stored = LoadLe32(std::span<const std::uint8_t, kEdcSize>(&sector[edcOffset], kEdcSize));
    return EdcOf(sector.subspan(start, edcOffset - start)) == stored;
}

/// The parity covers the header in Mode 1. In Mode 2 the header counts as zero.
bool ParityMatches(Sector sector, bool headerCounts) {
    std::array<std::uint8_t, kParityAreaSize> area = {};
    std::copy(sector.begin() + kAddressOffset, sector.end(), area.begin());
    if (!headerCounts) {
        std::fill_n(area.begin(), kHeaderEnd - kAddressOffset, std::uint8_t{0});
    }
    PutParity(area);
    constexpr std::size_t kParityStart = kPParityOffset - kAddressOffset;
    return std::equal(area.begin() + kParityStart, area.end(), sector.begin() + kPParityOffset);
}

/// A data sector with more wrong bytes in its sync field is not recognised as one.
constexpr std::ptrdiff_t kMostWrongSyncBytes = 2;

std::ptrdiff_t WrongSyncBytes(Sector sector) {
    return std::inner_product(kSync.begin(), kSync.end(), sector.begin(), std::ptrdiff_t{0}, std::plus<>(),
                              std::not_equal_to<>());
}

bool IsZero(std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

std::uint32_t FromBcd(std::uint8_t bcd) {
    return static_cast<std::uint32_t>(bcd >> 4U) * 10U + (bcd & 0x0FU);
}

}  // namespace

ESectorKind KindOfSector(Sector sector) {
    if (WrongSyncBytes(sector) > kMostWrongSyncBytes) {
        return ESectorKind::Audio;
    }
    if (sector[kModeOffset] == kMode1) {
        return ESectorKind::Mode1;
    }
    const auto subHeader = sector.begin() + kSubHeaderOffset;
    if (sector[kModeOffset] != kMode2 ||
        !std::equal(subHeader, subHeader + kSubHeaderCopy, subHeader + kSubHeaderCopy)) {
        return ESectorKind::Other;
    }
    return (sector[kSubmodeOffset] & kForm2Bit) != 0 ? ESectorKind::Mode2Form2 : ESectorKind::Mode2Form1;
}

std::span<const std::uint8_t, kUserDataSize> UserDataOf(Sector sector) {
    return sector[kModeOffset] == kMode1 ? sector.subspan<kMode1DataOffset, kUserDataSize>()
                                         : sector.subspan<kForm1DataOffset, kUserDataSize>();
}

std::string TextOf(const SSectorFaults& faults) {
    if (faults.audio) {
        return "no data sector, perhaps audio";
    }
    std::string text;
    const auto tell = [&text](bool wrong, const char* what) {
        if (wrong) {
            text += (text.empty() ? "wrong " : ", ") + std::string(what);
        }
    };
    tell(faults.sync, "sync field");
    tell(faults.address, "address");
    tell(faults.kind, "mode or form");
    tell(faults.edc, "EDC");
    tell(faults.parity, "parity");
    if (faults.longData) {
        text += (text.empty() ? "" : "; ") + std::string("2324 bytes of Form 2 data");
    }
    return text;
}

SSectorFaults CheckUserData(Sector sector) {
    SSectorFaults faults;
    faults.sync = WrongSyncBytes(sector) > 0;
    switch (KindOfSector(sector)) {
        case ESectorKind::Mode1:
            faults.edc = !EdcMatches(sector, kSyncOffset, kMode1EdcOffset);
            break;
        case ESectorKind::Mode2Form1:
            faults.edc = !EdcMatches(sector, kSubHeaderOffset, kForm1EdcOffset);
            break;
        case ESectorKind::Mode2Form2:
            faults.edc = !IsZero(sector.subspan(kForm2EdcOffset, kEdcSize)) &&
                         !EdcMatches(sector, kSubHeaderOffset, kForm2EdcOffset);
            faults.longData = !IsZero(sector.subspan(kForm1EdcOffset, kForm2EdcOffset - kForm1EdcOffset));
            break;
        case ESectorKind::Other:
            faults.kind = true;
            break;
        case ESectorKind::Audio:
            faults = {.audio = true};
            break;
    }
    return faults;
}

SSectorFaults CheckSector(Sector sector, std::uint32_t number) {
    SSectorFaults faults = CheckUserData(sector);
    faults.longData = false;
    if (faults.audio) {
        return faults;
    }
    const auto address = AddressOfSector(number);
    faults.address = !std::equal(address.begin(), address.end(), sector.begin() + kAddressOffset);
    const ESectorKind kind = KindOfSector(sector);
    if (kind == ESectorKind::Mode1 || kind == ESectorKind::Mode2Form1) {
        faults.parity = !ParityMatches(sector, kind == ESectorKind::Mode1);
    }
    return faults;
}

std::uint32_t NumberOfSector(Sector sector) {
    const std::uint32_t seconds =
        FromBcd(sector[kAddressOffset]) * kSecondsPerMinute + FromBcd(sector[kAddressOffset + 1]);
    return seconds * kFramesPerSecond + FromBcd(sector[kAddressOffset + 2]) - kFirstFrame;
}

}  // namespace vantrel
