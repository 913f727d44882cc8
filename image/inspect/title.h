// The name and the number of a title, from the files that its console reads first.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "files/byte_source.h"
#include "iso/contents.h"

namespace vantrel {

/// Texts are empty if the image does not tell them.
struct STitle {
    std::string name;
    std::string discId;  ///< four letters and five digits, as printed on the disc: "SLUS-20062"
};

/// The disc number from the BOOT2 (or BOOT) line of a SYSTEM.CNF: "BOOT2 = cdrom0:\SLUS_200.62;1" gives "SLUS-20062".
/// Empty if there is no such line or it starts a program with another kind of name.
std::string DiscIdOfSystemCnf(std::string_view text);

/// TITLE and DISC_ID of a PARAM.SFO. Ignores entries that reach beyond the file.
STitle TitleOfParamSfo(std::span<const std::uint8_t> file);

/// The title of an image, from its SYSTEM.CNF or PSP_GAME/PARAM.SFO.
STitle ReadTitle(CByteSource& image, const SContents& contents);

}  // namespace vantrel
