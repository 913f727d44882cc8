#include "iml/exact_rebuild.h"

#include <algorithm>
#include <array>
#include <optional>

#include "files/byte_order.h"
#include "iml/image_writer.h"
#include "iml/layout_path.h"
#include "iml/trailing_sector.h"
#include "operation/text.h"

namespace vantrel {

namespace {

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
        m_writer.Begin(m_pass.IsDvd() ? kImageSector : 0, m_pass.LeadingLast());
        m_writer.BeginPlacing(m_lists);
        m_length = ImageLength();
        m_writer.StartProgress(SectorsOf(m_length), m_pass.IsDvd() ? EProgressFill::Dvd : EProgressFill::Cd);
        if (m_pass.IsDvd()) {
            WriteTrailingSector();
        }
        PlaceFiles();
        ExtendToLength();
        const char* text = m_pass.IsDvd() ? "Rebuilding [dvd] ISO done!" : "Rebuilding [cd] ISO done!";
        m_writer.Finish(m_lists, text, text);
    }

private:
    /// The image's length in bytes: that of its volume.
    std::int64_t ImageLength() {
        std::array<std::uint8_t, 4> field = {};
        m_writer.Leading().ReadAt(kVolumeSizePosition, field);
        const std::uint32_t sectors = LoadLe32(field);
        if (sectors >= kSectorLimit) {
            m_operation.Fail(Format("%s has a volume larger than any disc", m_request.leadingPath.c_str()));
        }
        return sectors * kImageSector;
    }

    void WriteTrailingSector() {
        const TrailingSector sector = ReadTrailingSector(m_writer.Leading());
        const std::uint32_t place = TrailingPlaceOf(sector);
        if (place >= kSectorLimit) {
            m_operation.Fail(Format("%s puts its last sector where no disc has one", m_request.leadingPath.c_str()));
        }
        m_writer.Seek(place * kImageSector);
        m_writer.Write(sector);
        m_writer.ShowBlockDone();
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
        m_writer.Seek(*first * kImageSector);
        m_writer.CopyListed(file.path, length);
        PadBehind(*first * kImageSector + length);
        m_operation.SetPane(EPane::Bytes, BytesText(m_writer.Output().Size()));
    }

    /// Zeros from the end of a file to the next sector. Among the leading structures these have the say.
    void PadBehind(std::int64_t end) {
        const std::int64_t sectorEnd = SectorsOf(end) * kImageSector;
        if (end >= m_writer.LeadingLength()) {
            m_writer.WriteZeros(sectorEnd - end);
        }
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
    std::int64_t m_length = 0;
};

}  // namespace

void RebuildExactly(const SRebuildRequest& request, const CLayoutPass& pass, CSideLists& lists, COperation& operation) {
    CExactRebuild(request, pass, lists, operation).Run();
}

}  // namespace vantrel
