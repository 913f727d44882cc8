// A track of a raw image: where its sectors are stored, and how. An image without a CUE sheet is one track.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "files/input_file.h"
#include "raw/sector_check.h"

namespace vantrel {

/// What is stored of each sector. Whole data sectors say themselves which mode they have, so that the two whole modes
/// are treated alike.
enum class ETrackMode {
    Audio,
    Mode1Data,         ///< MODE1/2048: user data only
    Mode1Whole,        ///< MODE1/2352
    Mode2Data,         ///< MODE2/2048: user data only
    Mode2WithoutSync,  ///< MODE2/2336: everything behind the header
    Mode2Whole,        ///< MODE2/2352
};

/// "MODE2/2352", as CUE sheets have it.
const char* NameOf(ETrackMode mode);

/// Bytes that are stored of each sector.
std::size_t SectorSizeOf(ETrackMode mode);

struct STrack {
    std::uint32_t number = 1;
    ETrackMode mode = ETrackMode::Mode2Whole;
    std::string path;           ///< The file that holds the sectors.
    std::int64_t position = 0;  ///< of the first sector in the file, in bytes
    std::int64_t sectors = 0;   ///< −1 if the file is missing or holds no plain sectors.
    std::int64_t leftOver = 0;  ///< Bytes behind the last whole sector.
    bool startsDisc = true;     ///< The first sector's address must be 00:02:00.

    bool IsAudio() const { return mode == ETrackMode::Audio; }
    bool IsReadableData() const { return !IsAudio() && sectors >= 0; }
    /// Length of its whole sectors as stored; negative if the file is missing.
    std::int64_t Bytes() const { return sectors * static_cast<std::int64_t>(SectorSizeOf(mode)); }
};

/// Throws CRefused unless the first sector of a data track is one and can be read. Names sectors that are stored with
/// their subchannels, 2448 bytes each.
void RequireDataSectors(const STrack& track, CInputFile& file);

// Each takes a sector of a data track as stored, SectorSizeOf(mode) bytes.

/// Minute, second and frame of the sector's address in BCD; null if they are not stored.
const std::uint8_t* StoredAddress(ETrackMode mode, std::span<const std::uint8_t> stored);
/// The kind of the sector; see KindOfSector.
ESectorKind KindOf(ETrackMode mode, std::span<const std::uint8_t> stored);
/// The user data; see UserDataOf in raw/sector_check.h.
std::span<const std::uint8_t, kUserDataSize> UserDataOf(ETrackMode mode, std::span<const std::uint8_t> stored);
/// Checks everything that is stored; see CheckUserData.
SSectorFaults CheckUserData(ETrackMode mode, std::span<const std::uint8_t> stored);
/// Checks everything that is stored; see CheckSector.
SSectorFaults CheckSector(ETrackMode mode, std::span<const std::uint8_t> stored, std::uint32_t number);

}  // namespace vantrel
