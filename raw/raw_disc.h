// The tracks of a raw image: those of a CUE sheet and its files, or the single one of a file without a sheet.
#pragma once

#include <string>
#include <vector>

#include "raw/track.h"

namespace vantrel {

struct SRawDisc {
    std::vector<STrack> tracks;
    std::size_t dataTrack = 0;  ///< which of them is the first data track
    bool hasSheet = false;

    const STrack& DataTrack() const { return tracks[dataTrack]; }
    /// All tracks but that one.
    std::vector<STrack> OtherTracks() const;
    /// The files of all tracks, each once, in order.
    std::vector<std::string> Files() const;
};

/// "track 2 (AUDIO) is not in the image"
std::string TextOfLeftOut(const STrack& track);

/// Reads a CUE sheet, or takes any other file as a track of whole sectors. The names in a sheet are looked up beside
/// it, in any letter case; folders in them are ignored. Throws CRefused if the sheet is wrong, if it has audio tracks
/// only, or if the data track's file is missing or too short.
SRawDisc ReadRawDisc(const std::string& path);

}  // namespace vantrel
