#include "iml/rebuild/exact_rebuild.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "files/native_file.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_path.h"
#include "iml/layout/trailing_sector.h"
#include "iml/rebuild/image_writer.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Bytes of a stored area copied at a time.
constexpr std::int64_t kBufferSize = 1 << 20;

/// Finds the first sector of a file. For a file that shares the sectors of the file before it, the layout records the
/// last sector only. So a file that is too long for that sector, ends there and starts where the earlier file starts
/// lies at the sectors of the earlier file.
class CFirstSectorFinder {
public:
    /// The first sector; nothing if the file is longer than its range.
    std::optional<std::int64_t> FirstOf(const SPlacement& file, std::int64_t length) {
        if (length <= RoomOf(file)) {
            m_earlierFirst = file.first;
            return file.first;
        }
        const std::int64_t sharedFirst = static_cast<std::int64_t>(file.last) - SectorsFor(length) + 1;
        const bool isShared = file.first == file.last && sharedFirst == m_earlierFirst;
        return isShared ? std::optional(sharedFirst) : std::nullopt;
    }

    /// Bytes from the first to the last sector of a file's range.
    static std::int64_t RoomOf(const SPlacement& file) {
        return (static_cast<std::int64_t>(file.last) - file.first + 1) * kSectorSize;
    }

private:
    std::int64_t m_earlierFirst = -1;
};

class CExactRebuild {
public:
    CExactRebuild(const SRebuildRequest& request, const CLayoutPass& pass, CPlacements& placements,
                  COperation& operation)
        : m_request(request),
          m_pass(pass),
          m_placements(placements),
          m_operation(operation),
          m_writer(request, placements, operation) {}

    void Run() {
        m_hasGaps = FileKindOf(m_request.gapsPath) != EFileKind::Missing;
        BeginImage();
        m_writer.BeginPlacing();
        m_writer.StartProgress(SectorsFor(m_length));
        // Stored areas first, so that a file that has grown within its last sector overwrites them. All other bytes are
        // zeros.
        if (m_hasGaps) {
            RestoreGaps();
        } else if (m_pass.IsDvd()) {
            WriteTrailingSector();
        }
        PlaceFiles();
        ExtendToLength();
        const char* text = m_pass.IsDvd() ? "Rebuilding [dvd] ISO done!" : "Rebuilding [cd] ISO done!";
        m_writer.Finish(text, text);
    }

private:
    /// The leading structures are whole sectors, even if the image ends within the last one.
    void BeginImage() {
        const std::int64_t heldBack = m_pass.IsDvd() ? kSectorSize : 0;
        if (m_hasGaps) {
            m_length = OpenGaps();
            m_writer.Begin(heldBack, m_pass.LeadingLast(), m_length);
        } else {
            m_writer.Begin(heldBack, m_pass.LeadingLast());
            m_length = VolumeLength();
        }
    }

    std::int64_t OpenGaps() {
        if (!m_gaps.Open(m_request.gapsPath)) {
            m_operation.Fail(m_gaps.Problem());
        }
        CheckSector(m_gaps.ImageLength() / kSectorSize, m_request.gapsPath);
        return m_gaps.ImageLength();
    }

    /// Without a gap file, the image is as long as its volume.
    std::int64_t VolumeLength() {
        const std::uint32_t sectors = ReadPrimaryVolume(m_writer.Leading()).volumeSpaceSize.Value();
        CheckSector(sectors, m_request.leadingPath);
        return sectors * kSectorSize;
    }

    void CheckSector(std::int64_t sector, const std::string& path) {
        if (sector >= kSectorLimit) {
            m_operation.Fail(Format("%s describes an image larger than any disc", path.c_str()));
        }
    }

    void RestoreGaps() {
        for (std::size_t i = 0; i < m_gaps.Areas().size(); ++i) {
            m_writer.Seek(m_gaps.Areas()[i].position);
            RestoreGap(i, m_gaps.Areas()[i].length);
        }
    }

    void RestoreGap(std::size_t index, std::int64_t length) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::min(length, kBufferSize)));
        for (std::int64_t done = 0; done < length; done += kBufferSize) {
            const auto piece = std::span(bytes).first(static_cast<std::size_t>(std::min(length - done, kBufferSize)));
            if (m_gaps.ReadAt(index, done, piece) != piece.size()) {
                m_operation.Fail(Format("Cannot read all of %s", m_request.gapsPath.c_str()));
            }
            m_writer.Write(piece);
            m_writer.Advance(SectorsFor(static_cast<std::int64_t>(piece.size())));
        }
    }

    void WriteTrailingSector() {
        const TrailingSector sector = ReadTrailingSector(m_writer.Leading());
        const std::uint32_t location = TagLocationOf(sector);
        CheckSector(location, m_request.leadingPath);
        m_writer.Seek(location * kSectorSize);
        m_writer.Write(sector);
        m_writer.Advance(1);
    }

    void PlaceFiles() {
        for (const SPlacement& file : m_placements.Files()) {
            Place(file);
        }
    }

    void Place(const SPlacement& file) {
        m_operation.SetPane(EPane::File, ShownPath(file.path));
        const std::int64_t length = m_writer.OpenListed(file.path);
        const std::optional<std::int64_t> first = m_firstSectors.FirstOf(file, length);
        if (!first) {
            m_operation.Fail(Format("%s has %lld bytes, but its sectors in the image hold only %lld", file.path.c_str(),
                                    static_cast<long long>(length),
                                    static_cast<long long>(CFirstSectorFinder::RoomOf(file))));
        }
        if (length > 0) {
            m_writer.Seek(*first * kSectorSize);
            m_writer.CopyListed(file.path, length);
        }
        m_operation.SetPane(EPane::Bytes, BytesText(m_writer.Output().Size()));
    }

    void ExtendToLength() {
        const std::int64_t end = m_writer.Output().Size();
        m_writer.Seek(end);
        m_writer.WriteZeros(m_length - end);
    }

    const SRebuildRequest& m_request;
    const CLayoutPass& m_pass;
    CPlacements& m_placements;
    COperation& m_operation;
    CImageWriter m_writer;
    CFirstSectorFinder m_firstSectors;
    CGapFileReader m_gaps;
    bool m_hasGaps = false;
    std::int64_t m_length = 0;
};

}  // namespace

void RebuildExactly(const SRebuildRequest& request, const CLayoutPass& pass, CPlacements& placements,
                    COperation& operation) {
    CExactRebuild(request, pass, placements, operation).Run();
}

}  // namespace vantrel
