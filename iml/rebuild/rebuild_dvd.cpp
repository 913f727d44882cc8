// Rebuilding of DVD images.
#include <string>

#include "iml/rebuild/exact_rebuild.h"
#include "iml/rebuild/file_placing.h"
#include "iml/rebuild/image_writer.h"
#include "iml/rebuild/layout_pass.h"
#include "iml/rebuild/rebuild.h"
#include "iml/layout/trailing_sector.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// One run of the rebuild behind its first pass.
class CDvdRebuild {
public:
    CDvdRebuild(const SRebuildRequest& request, CSideLists& lists, COperation& operation)
        : m_request(request), m_lists(lists), m_operation(operation), m_writer(request, operation) {}

    void Run(std::int64_t count, std::int32_t leadingLast) {
        m_writer.Begin(kImageSector, leadingLast);
        m_writer.Leading().Close();
        m_writer.BeginPlacing(m_lists);
        WriteLeadIn();
        PlaceFiles(count);
        WriteTail();
        m_writer.CorrectVolumeSize();
        m_operation.SetPane(EPane::Bytes, BytesText(m_writer.Output().Size()));
        m_writer.Finish(m_lists, "Rebuilding dvd ISO done !", "Rebuilding [dvd] ISO done!");
    }

private:
    /// Reads the trailing sector; `before` and `after` are the failure text around the path.
    TrailingSector OpenAndReadTrailing(const char* before, const char* after) {
        if (!m_writer.Leading().Open(m_request.leadingPath)) {
            m_operation.Fail(before + m_request.leadingPath + after);
        }
        const TrailingSector sector = ReadTrailingSector(m_writer.Leading());
        m_writer.CheckLeading();
        m_writer.Leading().Close();
        return sector;
    }

    std::int64_t TrailingPlace(const char* failure) {
        const std::uint32_t place = TrailingPlaceOf(OpenAndReadTrailing(failure, ""));
        if (place >= kSectorLimit) {
            m_operation.Fail(Format("%s puts its last sector where no disc has one", m_request.leadingPath.c_str()));
        }
        return place;
    }

    void WriteLeadIn() {
        const std::int64_t place = TrailingPlace("Code 4000a!!! file not found==> ");
        const std::int64_t first = m_lists.FirstSector();
        m_writer.StartProgress(place + 1, EProgressFill::Dvd);
        m_writer.WriteGap(first - m_writer.LeadingLength() / kImageSector);
    }

    void PlaceFiles(std::int64_t count) {
        CFilePlacing placing(m_writer, m_operation, m_writer.LeadingLength());
        CLineBuffer line;
        for (std::int64_t i = 0; i < count; ++i) {
            const auto file = m_lists.Next(line);
            if (!file) {
                break;
            }
            placing.Show(*file);
            placing.Place(*file);
            m_operation.SetPane(EPane::Bytes, BytesText(m_writer.Output().Size()));
        }
    }

    void WriteTail() {
        const std::int64_t place = TrailingPlace("Code 3042!!! file not found==> ");
        m_writer.WriteGap(place - static_cast<std::int64_t>(m_lists.SectorBehindLast()));
        m_writer.Write(OpenAndReadTrailing("Code 3043 - Error!!! Opening [", "]"));
        m_writer.ShowBlocksDone(1);
    }

    const SRebuildRequest& m_request;
    CSideLists& m_lists;
    COperation& m_operation;
    CImageWriter m_writer;
};

}  // namespace

void RebuildDvdImage(const SRebuildRequest& request, COperation& operation) {
    CSideLists lists(request.entryListPath, request.boundsPath, SidePlaceOf(request));
    CLayoutPass pass(request, kDvdRules, lists, operation);
    pass.Run();
    if (request.exact) {
        RebuildExactly(request, pass, lists, operation);
        return;
    }
    CDvdRebuild(request, lists, operation).Run(pass.Announced(), pass.LeadingLast());
}

}  // namespace vantrel
