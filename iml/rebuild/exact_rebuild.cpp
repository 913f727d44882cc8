#include "iml/rebuild/exact_rebuild.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "files/byte_order.h"
#include "files/native_file.h"
#include "iml/layout/gap_file.h"
#include "iml/rebuild/image_writer.h"
#include "iml/layout/layout_path.h"
#include "iml/layout/trailing_sector.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// What is read of a stored area at once.
constexpr std::int64_t kGapPiece = 1 << 20;

std::int64_t SectorsOf(std::int64_t bytes) {
    return (bytes + kImageSector - 1) / kImageSector;
}

/// Finds where a file begins. The layout shortens the range of a file that shares its place with the one before it to
/// its last sector; what is too long for that sector but ends there, and begins where the earlier file does, lies
/// where the earlier file lies.
class CPlaceFinder {
public:
    /// The first sector; nothing when the file has more bytes than room.
    std::optional<std::int64_t> FirstOf(const CSideLists::SPlacedFile& file, std::int64_t length) {
        if (length <= RoomOf(file)) {
            m_earlierFirst = file.first;
            return file.first;
        }
        const std::int64_t sharedFirst = static_cast<std::int64_t>(file.last) - SectorsOf(length) + 1;
        const bool isShared = file.first == file.last && sharedFirst == m_earlierFirst;
        return isShared ? std::optional(sharedFirst) : std::nullopt;
    }

    /// Bytes from the first to the last sector of a file's range.
    static std::int64_t RoomOf(const CSideLists::SPlacedFile& file) {
        return (static_cast<std::int64_t>(file.last) - file.first + 1) * kImageSector;
    }

private:
    std::int64_t m_earlierFirst = -1;
};

class CExactRebuild {
public:
    CExactRebuild(const SRebuildRequest& request, const CLayoutPass& pass, CSideLists& lists, COperation& operation)
        : m_request(request), m_pass(pass), m_lists(lists), m_operation(operation), m_writer(request, operation) {}

    void Run() {
        m_hasGaps = FileKindOf(m_request.gapsPath) != EFileKind::Missing;
        BeginImage();
        m_writer.BeginPlacing(m_lists);
        m_writer.StartProgress(SectorsOf(m_length), m_pass.IsDvd() ? EProgressFill::Dvd : EProgressFill::Cd);
        // What was stored comes first, so that a file that has grown within its last sector lies over it. Everything
        // that is not written is zeros.
        if (m_hasGaps) {
            RestoreGaps();
        } else if (m_pass.IsDvd()) {
            WriteTrailingSector();
        }
        PlaceFiles();
        ExtendToLength();
        const char* text = m_pass.IsDvd() ? "Rebuilding [dvd] ISO done!" : "Rebuilding [cd] ISO done!";
        m_writer.Finish(m_lists, text, text);
    }

private:
    /// The leading structures are whole sectors, also of an image that ends within one.
    void BeginImage() {
        const std::int64_t heldBack = m_pass.IsDvd() ? kImageSector : 0;
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
        CheckSector(m_gaps.ImageLength() / kImageSector, m_request.gapsPath);
        return m_gaps.ImageLength();
    }

    /// Without stored gaps the image is taken to be as long as its volume.
    std::int64_t VolumeLength() {
        std::array<std::uint8_t, 4> field = {};
        m_writer.Leading().ReadAt(kVolumeSizePosition, field);
        const std::uint32_t sectors = LoadLe32(field);
        CheckSector(sectors, m_request.leadingPath);
        return sectors * kImageSector;
    }

    void CheckSector(std::int64_t sector, const std::string& path) {
        if (sector >= kSectorLimit) {
            m_operation.Fail(Format("%s asks for an image larger than any disc", path.c_str()));
        }
    }

    void RestoreGaps() {
        for (std::size_t i = 0; i < m_gaps.Areas().size(); ++i) {
            m_writer.Seek(m_gaps.Areas()[i].position);
            RestoreGap(i, m_gaps.Areas()[i].length);
        }
    }

    void RestoreGap(std::size_t index, std::int64_t length) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::min(length, kGapPiece)));
        for (std::int64_t done = 0; done < length; done += kGapPiece) {
            const auto piece = std::span(bytes).first(static_cast<std::size_t>(std::min(length - done, kGapPiece)));
            if (m_gaps.ReadAt(index, done, piece) != piece.size()) {
                m_operation.Fail(Format("Cannot read all of %s", m_request.gapsPath.c_str()));
            }
            m_writer.Write(piece);
            m_writer.ShowBlocksDone(SectorsOf(static_cast<std::int64_t>(piece.size())));
        }
    }

    void WriteTrailingSector() {
        const TrailingSector sector = ReadTrailingSector(m_writer.Leading());
        const std::uint32_t place = TrailingPlaceOf(sector);
        CheckSector(place, m_request.leadingPath);
        m_writer.Seek(place * kImageSector);
        m_writer.Write(sector);
        m_writer.ShowBlocksDone(1);
    }

    void PlaceFiles() {
        CLineBuffer line;
        for (std::int64_t i = 0; i < m_pass.Announced(); ++i) {
            const auto file = m_lists.Next(line);
            if (!file) {
                break;
            }
            Place(*file);
        }
    }

    void Place(const CSideLists::SPlacedFile& file) {
        m_operation.SetPane(EPane::File, ShownPath(file.path));
        const std::int64_t length = m_writer.OpenListed(file.path);
        const std::optional<std::int64_t> first = m_places.FirstOf(file, length);
        if (!first) {
            m_operation.Fail(Format("%s has %lld bytes, but its place in the image has room for %lld only",
                                    file.path.c_str(), static_cast<long long>(length),
                                    static_cast<long long>(CPlaceFinder::RoomOf(file))));
        }
        if (length > 0) {
            m_writer.Seek(*first * kImageSector);
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
    CSideLists& m_lists;
    COperation& m_operation;
    CImageWriter m_writer;
    CPlaceFinder m_places;
    CGapFileReader m_gaps;
    bool m_hasGaps = false;
    std::int64_t m_length = 0;
};

}  // namespace

void RebuildExactly(const SRebuildRequest& request, const CLayoutPass& pass, CSideLists& lists, COperation& operation) {
    CExactRebuild(request, pass, lists, operation).Run();
}

}  // namespace vantrel
