// Writes layouts and their ".ims" files from a declaration, for tests of the rebuild. It shares no code with the
// engine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/test_folder.h"

namespace vantrel::test {

enum class ELayoutMedia { Cd, Umd, Dvd };

struct SLayoutEntry {
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::string path;
};

struct SLayoutDescription {
    ELayoutMedia media = ELayoutMedia::Cd;
    std::vector<SLayoutEntry> entries;
    /// Sectors of the leading structures; at least 17, to include the volume descriptor.
    std::uint32_t leadingSectors = 18;
    /// Last sector of a DVD's volume.
    std::uint32_t volumeLast = 0;
    /// Text in place of the actual number of entries.
    std::optional<std::string> count;
    std::string lineEnd = "\r\n";
    /// Text after the entries.
    std::string ending = "[/LOC]\r\n\r\n";
};

/// The layout's text.
std::string LayoutText(const SLayoutDescription& description);

/// The ".ims" file: random sectors with the texts that identify the medium (system identifier "PLAYSTATION" or "PSP
/// GAME" and the CD-XA mark), and the trailing sector of a DVD.
Bytes LeadingBytes(const SLayoutDescription& description);

}  // namespace vantrel::test
