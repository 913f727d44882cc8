// Reads the text of a CUE sheet. Which files it names, and where the tracks are in them, is found out in
// raw/raw_disc.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/byte_source.h"
#include "raw/track.h"

namespace vantrel {

struct SCueFile {
    std::string name;    ///< as the sheet has it, without quotes
    bool binary = true;  ///< Plain sectors; false for WAVE and the like.
};

/// A position in one of the files.
struct SCueIndex {
    std::size_t file = 0;     ///< which of the sheet's files
    std::uint32_t frame = 0;  ///< sectors from the beginning of the file
};

struct SCueTrack {
    std::uint32_t number = 1;
    ETrackMode mode = ETrackMode::Audio;
    int line = 0;                     ///< of the sheet, from 1, for messages
    bool hasPregap = false;           ///< PREGAP: sectors of the disc that no file holds
    std::optional<SCueIndex> pregap;  ///< INDEX 00: sectors before the track that a file holds
    std::optional<SCueIndex> start;   ///< INDEX 01; never missing in a sheet that was read.
};

struct SCueSheet {
    std::vector<SCueFile> files;
    std::vector<SCueTrack> tracks;  ///< at least one, in ascending order of their numbers
};

/// Whether the file is a CUE sheet: the first command that does not describe the disc as a whole is FILE.
bool IsCueSheet(CByteSource& file);

/// Reads a sheet with lines that end in LF or CR LF. Throws CRefused for everything that is not correct; the message
/// has `path` and the number of the line.
SCueSheet ParseCueSheet(std::string_view text, const std::string& path);

}  // namespace vantrel
