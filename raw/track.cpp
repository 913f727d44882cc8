#include "raw/track.h"

#include <algorithm>
#include <array>

#include "files/refused.h"
#include "operation/text.h"
#include "raw/sector.h"

namespace vantrel {

namespace {

using Stored = std::span<const std::uint8_t>;
using Sector = std::array<std::uint8_t, kRawSectorSize>;

constexpr std::int64_t kSizeWithSubchannels = 2448;

bool IsUserDataOnly(ETrackMode mode) {
    return mode == ETrackMode::Mode1Data || mode == ETrackMode::Mode2Data;
}

/// The stored sector with a correct sync field and header in front if these are not stored.
Sector WholeSector(ETrackMode mode, Stored stored, std::uint32_t number) {
    Sector sector = {};
    std::copy(stored.rbegin(), stored.rend(), sector.rbegin());
    if (mode == ETrackMode::Mode2WithoutSync) {
        std::copy(kSync.begin(), kSync.end(), sector.begin());
        const auto address = AddressOfSector(number);
        std::copy(address.begin(), address.end(), sector.begin() + kAddressOffset);
        sector[kModeOffset] = kMode2;
    }
    return sector;
}

bool HasSync(CByteSource& file, std::int64_t position) {
    std::array<std::uint8_t, kSync.size()> bytes = {};
    return file.ReadAt(position, bytes) == bytes.size() && bytes == kSync;
}

bool HasSubchannels(CByteSource& file, std::int64_t position) {
    return HasSync(file, position) && HasSync(file, position + kSizeWithSubchannels) &&
           !HasSync(file, position + static_cast<std::int64_t>(kRawSectorSize));
}

}  // namespace

const char* NameOf(ETrackMode mode) {
    switch (mode) {
        case ETrackMode::Audio:
            break;
        case ETrackMode::Mode1Data:
            return "MODE1/2048";
        case ETrackMode::Mode1Whole:
            return "MODE1/2352";
        case ETrackMode::Mode2Data:
            return "MODE2/2048";
        case ETrackMode::Mode2WithoutSync:
            return "MODE2/2336";
        case ETrackMode::Mode2Whole:
            return "MODE2/2352";
    }
    return "AUDIO";
}

std::size_t SectorSizeOf(ETrackMode mode) {
    if (IsUserDataOnly(mode)) {
        return kUserDataSize;
    }
    return mode == ETrackMode::Mode2WithoutSync ? kRawSectorSize - kHeaderEnd : kRawSectorSize;
}

void RequireDataSectors(const STrack& track, CInputFile& file) {
    Sector sector = {};
    const auto stored = std::span(sector).first(SectorSizeOf(track.mode));
    const bool isComplete = file.ReadAt(track.position, stored) == stored.size();
    const bool hasSubchannels = stored.size() == kRawSectorSize && HasSubchannels(file, track.position);
    if (file.HasFailed()) {
        throw CRefused(file.Problem());
    }
    if (!isComplete) {
        throw CRefused(Format("%s: there is no whole sector of %zu bytes", track.path.c_str(), stored.size()));
    }
    if (hasSubchannels) {
        throw CRefused(track.path +
                       ": its sectors are stored with their subchannels, 2448 bytes each; only sectors of "
                       "2352 bytes can be read");
    }
    if (KindOf(track.mode, stored) == ESectorKind::Audio) {
        throw CRefused(track.path + ": does not begin with a data sector of 2352 bytes");
    }
}

const std::uint8_t* StoredAddress(ETrackMode mode, Stored stored) {
    return SectorSizeOf(mode) == kRawSectorSize ? &stored[kAddressOffset] : nullptr;
}

ESectorKind KindOf(ETrackMode mode, Stored stored) {
    if (IsUserDataOnly(mode)) {
        return mode == ETrackMode::Mode1Data ? ESectorKind::Mode1 : ESectorKind::Mode2Form1;
    }
    return KindOfSector(WholeSector(mode, stored, 0));
}

std::span<const std::uint8_t, kUserDataSize> UserDataOf(ETrackMode mode, Stored stored) {
    if (IsUserDataOnly(mode)) {
        return stored.first<kUserDataSize>();
    }
    if (mode == ETrackMode::Mode2WithoutSync) {
        return stored.subspan<kForm1DataOffset - kHeaderEnd, kUserDataSize>();
    }
    return UserDataOf(stored.first<kRawSectorSize>());
}

SSectorFaults CheckUserData(ETrackMode mode, Stored stored) {
    if (IsUserDataOnly(mode)) {
        return {};
    }
    return mode == ETrackMode::Mode2WithoutSync ? CheckUserData(WholeSector(mode, stored, 0))
                                                : CheckUserData(stored.first<kRawSectorSize>());
}

SSectorFaults CheckSector(ETrackMode mode, Stored stored, std::uint32_t number) {
    return IsUserDataOnly(mode) ? SSectorFaults{} : CheckSector(WholeSector(mode, stored, number), number);
}

}  // namespace vantrel
