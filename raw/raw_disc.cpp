#include "raw/raw_disc.h"

#include <algorithm>

#include "files/input_file.h"
#include "files/path.h"
#include "files/refused.h"
#include "operation/text.h"
#include "raw/cue_reader.h"

namespace vantrel {

namespace {

constexpr std::int64_t kLongestSheet = 1 << 20;

std::int64_t StoredSize(ETrackMode mode) {
    return static_cast<std::int64_t>(SectorSizeOf(mode));
}

/// An index that lies in a file.
struct SMark {
    const SCueTrack* track;
    std::uint32_t frame;
    bool isStart;  ///< INDEX 01
};

/// Finds the places of a sheet's tracks. The sectors of one file may have different sizes, so that the bytes are
/// counted from index to index.
class CTrackPlacement {
public:
    CTrackPlacement(const SCueSheet& sheet, const std::string& path) : m_sheet(sheet), m_path(path) {
        for (std::size_t file = 0; file < sheet.files.size(); ++file) {
            PlaceIn(file);
        }
    }

    std::vector<STrack> Tracks() { return std::move(m_tracks); }

private:
    std::string PathOf(const std::string& name) const {
        return ResolveFileCase(FolderOf(m_path) + name.substr(name.find_last_of("/\\") + 1));
    }

    std::vector<SMark> MarksIn(std::size_t file) const {
        std::vector<SMark> marks;
        for (const SCueTrack& track : m_sheet.tracks) {
            if (track.pregap && track.pregap->file == file) {
                marks.push_back({&track, track.pregap->frame, false});
            }
            if (track.start->file == file) {
                marks.push_back({&track, track.start->frame, true});
            }
        }
        return marks;
    }

    /// Every track that starts in the file ends at the next index or with the file.
    void PlaceIn(std::size_t file) {
        const std::string path = PathOf(m_sheet.files[file].name);
        const std::int64_t size = m_sheet.files[file].binary ? FileSizeOf(path) : -1;
        const std::vector<SMark> marks = MarksIn(file);
        std::int64_t position = marks.empty() ? 0 : marks[0].frame * StoredSize(marks[0].track->mode);
        for (std::size_t i = 0; i < marks.size(); ++i) {
            const bool isLast = i + 1 == marks.size();
            const std::int64_t next =
                isLast ? size : position + (marks[i + 1].frame - marks[i].frame) * StoredSize(marks[i].track->mode);
            if (marks[i].isStart) {
                Add(*marks[i].track, path, position, next, size);
            }
            position = next;
        }
    }

    void Add(const SCueTrack& found, const std::string& path, std::int64_t position, std::int64_t end,
             std::int64_t size) {
        STrack track = {found.number, found.mode, path, position, -1, 0, false};
        track.startsDisc = m_tracks.empty() && position == 0 && !found.hasPregap;
        if (size >= 0) {
            if (position >= size || end > size) {
                throw CRefused(Format("%s:%d: track %u does not lie within %s", m_path.c_str(), found.line,
                                      found.number, path.c_str()));
            }
            track.sectors = (end - position) / StoredSize(track.mode);
            track.leftOver = (end - position) % StoredSize(track.mode);
        }
        m_tracks.push_back(std::move(track));
    }

    const SCueSheet& m_sheet;
    const std::string& m_path;
    std::vector<STrack> m_tracks;
};

std::string ReadSheet(CInputFile& file) {
    if (file.Size() > kLongestSheet) {
        throw CRefused(file.Path() + ": too long for a CUE sheet");
    }
    std::string text(static_cast<std::size_t>(std::max<std::int64_t>(file.Size(), 0)), '\0');
    text.resize(file.ReadAt(0, {reinterpret_cast<std::uint8_t*>(text.data()), text.size()}));
    return text;
}

SRawDisc DiscOfSheet(const std::string& text, const std::string& path) {
    SRawDisc disc;
    disc.hasSheet = true;
    disc.tracks = CTrackPlacement(ParseCueSheet(text, path), path).Tracks();
    const auto data =
        std::find_if(disc.tracks.begin(), disc.tracks.end(), [](const STrack& track) { return !track.IsAudio(); });
    if (data == disc.tracks.end()) {
        throw CRefused(path + ": the sheet has audio tracks only");
    }
    if (data->sectors < 0) {
        CInputFile file;
        const bool isOpen = file.Open(data->path);
        throw CRefused(data->path + ": " + (isOpen ? "cannot determine the length of the file" : LastFileError()));
    }
    disc.dataTrack = static_cast<std::size_t>(data - disc.tracks.begin());
    return disc;
}

SRawDisc DiscOfFile(const std::string& path, std::int64_t size) {
    STrack track;
    track.path = path;
    track.sectors = size / StoredSize(track.mode);
    track.leftOver = size % StoredSize(track.mode);
    return {{track}, 0, false};
}

}  // namespace

std::vector<STrack> SRawDisc::OtherTracks() const {
    std::vector<STrack> others;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        if (i != dataTrack) {
            others.push_back(tracks[i]);
        }
    }
    return others;
}

std::string TextOfLeftOut(const STrack& track) {
    return Format("track %u (%s) is not in the image", track.number, NameOf(track.mode));
}

std::vector<std::string> SRawDisc::Files() const {
    std::vector<std::string> files;
    for (const STrack& track : tracks) {
        if (files.empty() || files.back() != track.path) {
            files.push_back(track.path);
        }
    }
    return files;
}

SRawDisc ReadRawDisc(const std::string& path) {
    CInputFile file;
    const std::int64_t size = file.Open(path) ? file.Size() : -1;
    if (size < 0) {
        throw CRefused(path + ": " + LastFileError());
    }
    const bool hasSheet = IsCueSheet(file);
    const std::string text = hasSheet ? ReadSheet(file) : std::string();
    if (file.HasFailed()) {
        throw CRefused(file.Problem());
    }
    return hasSheet ? DiscOfSheet(text, path) : DiscOfFile(path, size);
}

}  // namespace vantrel
