// Rebuilds DVD images.
#include "iml/layout/trailing_sector.h"
#include "iml/rebuild/file_placing.h"
#include "iml/rebuild/image_writer.h"
#include "iml/rebuild/layout_pass.h"
#include "iml/rebuild/rebuild.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// The second pass.
class CDvdRebuild {
public:
    CDvdRebuild(const SRebuildRequest& request, CPlacements& placements, COperation& operation)
        : m_request(request),
          m_placements(placements),
          m_operation(operation),
          m_writer(request, placements, operation) {}

    void Run(std::int32_t leadingLast) {
        m_writer.Begin(kSectorSize, leadingLast);
        m_writer.Leading().Close();
        m_writer.BeginPlacing();
        WriteLeadIn();
        PlaceFiles();
        WriteTail();
        m_writer.CorrectVolumeSize();
        m_operation.SetPane(EPane::Bytes, BytesText(m_writer.Output().Size()));
        m_writer.Finish("Rebuilding dvd ISO done !", "Rebuilding [dvd] ISO done!");
    }

private:
    TrailingSector ReadTrailing(const char* failurePattern) {
        m_writer.Leading().OpenOrFail(m_request.leadingPath, failurePattern);
        const TrailingSector sector = ReadTrailingSector(m_writer.Leading());
        m_writer.CheckLeading();
        m_writer.Leading().Close();
        return sector;
    }

    std::int64_t ReadTagLocation(const char* failurePattern) {
        const std::uint32_t location = TagLocationOf(ReadTrailing(failurePattern));
        if (location >= kSectorLimit) {
            m_operation.Fail(
                Format("%s puts its last sector at a sector that exists on no disc", m_request.leadingPath.c_str()));
        }
        return location;
    }

    void WriteLeadIn() {
        m_writer.StartProgress(ReadTagLocation("Code 4000a!!! file not found==> %s") + 1);
        m_writer.WriteGap(m_placements.FirstSector() - m_writer.LeadingLength() / kSectorSize);
    }

    void PlaceFiles() {
        CFilePlacing placing(m_writer, m_operation);
        for (std::size_t i = 0; i < m_placements.Files().size(); ++i) {
            placing.Show(m_placements.Files()[i]);
            placing.Place(m_placements.Files()[i], m_placements.GapBehind(i));
            m_operation.SetPane(EPane::Bytes, BytesText(m_writer.Output().Size()));
        }
    }

    void WriteTail() {
        const std::int64_t location = ReadTagLocation("Code 3042!!! file not found==> %s");
        m_writer.WriteGap(location - m_placements.SectorBehindLast());
        m_writer.Write(ReadTrailing("Code 3043 - Error!!! Opening [%s]"));
        m_writer.Advance(1);
    }

    const SRebuildRequest& m_request;
    CPlacements& m_placements;
    COperation& m_operation;
    CImageWriter m_writer;
};

}  // namespace

void RebuildDvdImage(const SRebuildRequest& request, COperation& operation) {
    CPlacements placements(request, operation);
    CLayoutPass pass(request, kDvdShape, placements, operation);
    pass.Run();
    CDvdRebuild(request, placements, operation).Run(pass.LeadingLast());
}

}  // namespace vantrel
