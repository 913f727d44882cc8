// Looking at one raw sector: is everything that surrounds the user data what it should be?
#pragma once

#include <cstdint>
#include <span>

#include "raw/raw_sector.h"

namespace vantrel {

enum class ESectorKind { Mode1, Mode2Form1, Mode2Form2, Other };

/// What a sector is by its mode byte and, in Mode 2, by the form bit of its sub-header (CD-ROM XA). Mode 2 sectors
/// whose two copies of the sub-header differ have no form.
ESectorKind KindOfSector(std::span<const std::uint8_t, kRawSectorSize> sector);

/// The user data of a sector; for sectors that are neither Mode 1 nor Mode 2 Form 1, what stands in that place of Mode
/// 2 Form 1.
std::span<const std::uint8_t, kUserDataSize> UserDataOf(std::span<const std::uint8_t, kRawSectorSize> sector);

/// Parts of a sector that are wrong.
struct SSectorFaults {
    bool sync = false;
    bool address = false;  ///< not the expected one
    bool kind = false;     ///< a mode, or a form, that is not known
    bool edc = false;
    bool parity = false;

    bool Any() const { return sync || address || kind || edc || parity; }
    bool operator==(const SSectorFaults&) const = default;
};

/// Checks sync field, address, EDC and P/Q parity (ECMA-130, clause 14 and annex A). `number` is the sector's number in
/// an image that begins at 00:02:00. In Form 2 the EDC may be left out as four zeros, and there is no parity.
SSectorFaults CheckSector(std::span<const std::uint8_t, kRawSectorSize> sector, std::uint32_t number);

/// The number that belongs to a sector's own address; nothing sensible when the address is no BCD.
std::uint32_t NumberOfSector(std::span<const std::uint8_t, kRawSectorSize> sector);

}  // namespace vantrel
