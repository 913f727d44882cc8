// Checks a raw sector: everything that surrounds the user data.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "raw/raw_sector.h"

namespace vantrel {

enum class ESectorKind { Mode1, Mode2Form1, Mode2Form2, Other, Audio };

/// The kind of a sector by its mode byte and, in Mode 2, the form bit of its sub-header (CD-ROM XA). It is Other if the
/// two copies of the sub-header differ, and Audio if three or more bytes of the sync field are wrong: only data sectors
/// have one.
ESectorKind KindOfSector(std::span<const std::uint8_t, kRawSectorSize> sector);

/// The user data of a Mode 1 or Mode 2 Form 1 sector; of all other sectors, the bytes at the position of Mode 2 Form 1.
std::span<const std::uint8_t, kUserDataSize> UserDataOf(std::span<const std::uint8_t, kRawSectorSize> sector);

/// The parts of a sector that are wrong.
struct SSectorFaults {
    bool audio = false;  ///< No data sector; nothing else is checked then.
    bool sync = false;
    bool address = false;
    bool kind = false;  ///< unknown mode or form
    bool edc = false;
    bool parity = false;
    bool longData = false;  ///< Form 2 data whose last 276 bytes are used: no sector of a plain image can hold them.

    bool Any() const { return audio || sync || address || kind || edc || parity || longData; }
    bool operator==(const SSectorFaults&) const = default;
};

/// "wrong sync field, EDC"; faults.Any() must be true.
std::string TextOf(const SSectorFaults& faults);

/// Checks what the user data of a plain image depends on: sync field, mode, EDC and length.
SSectorFaults CheckUserData(std::span<const std::uint8_t, kRawSectorSize> sector);

/// Checks sync field, address, EDC and P/Q parity (ECMA-130, clause 14 and annex A). `number` is the sector's number in
/// an image that starts at 00:02:00. A Form 2 sector may have zeros instead of an EDC, and it has no parity.
SSectorFaults CheckSector(std::span<const std::uint8_t, kRawSectorSize> sector, std::uint32_t number);

/// The number of a sector by its own address. Undefined if the address is not BCD.
std::uint32_t NumberOfSector(std::span<const std::uint8_t, kRawSectorSize> sector);

}  // namespace vantrel
