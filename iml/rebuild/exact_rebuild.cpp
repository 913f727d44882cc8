#include "iml/rebuild/exact_rebuild.h"

#include <algorithm>
#include <map>
#include <vector>

#include "files/native_file.h"
#include "iml/layout/gap_file.h"
#include "iml/layout/layout_path.h"
#include "iml/layout/recorded_files.h"
#include "iml/rebuild/image_writer.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Bytes of a stored area copied at a time.
constexpr std::int64_t kBufferSize = 1 << 20;

/// The written image, read back.
class CWrittenImage : public CByteSource {
public:
    explicit CWrittenImage(COutputFile& output) : m_output(output) {}

    std::int64_t Size() const override { return m_output.Size(); }
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override {
        return m_output.ReadBack(position, buffer);
    }

private:
    COutputFile& m_output;
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
        OpenGaps();
        CheckLayout();
        // The leading structures are whole sectors, even if the image ends within the last one.
        m_writer.Begin(m_pass.IsDvd() ? kSectorSize : 0, m_pass.LeadingLast(), m_length);
        m_writer.BeginPlacing();
        m_writer.StartProgress(SectorsFor(m_length));
        RestoreGaps();
        PlaceFiles();
        ExtendToLength();
        CheckImage();
        const char* text = m_pass.IsDvd() ? "Rebuilding [dvd] ISO done!" : "Rebuilding [cd] ISO done!";
        m_writer.Finish(text, text);
    }

private:
    void OpenGaps() {
        if (FileKindOf(m_request.gapsPath) == EFileKind::Missing) {
            m_operation.Fail(
                Format("%s is missing: an exact rebuild needs the gap file that \"vantrel iso2iml --extract\" writes",
                       m_request.gapsPath.c_str()));
        }
        if (!m_gaps.Open(m_request.gapsPath)) {
            m_operation.Fail(m_gaps.Problem());
        }
        m_length = m_gaps.Origin().image.length;
        if (m_length / kSectorSize >= kSectorLimit) {
            m_operation.Fail(Format("%s describes an image larger than any disc", m_request.gapsPath.c_str()));
        }
    }

    void CheckLayout() {
        CCheckedInput layout(m_operation);
        layout.OpenOrFail(m_request.layoutPath, "Code 2011 - Error Opening %s");
        const SChecksum sum = ChecksumOf(layout, [this] { m_operation.Yield(); });
        layout.FailIfUnread();
        if (sum != m_gaps.Origin().layout) {
            m_operation.Fail(
                Format("%s belongs to another layout than %s: an exact rebuild needs both as one export "
                       "wrote them",
                       m_request.gapsPath.c_str(), m_request.layoutPath.c_str()));
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

    void PlaceFiles() {
        const CRecordedFiles records(m_writer.Leading());
        for (const SPlacement& file : m_placements.Files()) {
            const SContentFile* const record = records.Find(file.path, file.first, file.last);
            if (record == nullptr) {
                m_operation.Fail(Format("The directories have no file %s at sectors %u to %u", file.path.c_str(),
                                        file.first, file.last));
            }
            Place(file, *record, records);
        }
    }

    void Place(const SPlacement& file, const SContentFile& record, const CRecordedFiles& records) {
        m_operation.SetPane(EPane::File, ShownPath(file.path));
        const std::int64_t length = m_writer.OpenListed(file.path);
        CheckLength(file, length, record, records);
        if (record.Size() > 0 && records.SharesSectorsWith(record) != nullptr) {
            CheckSharedSectors(file, record);
        }
        if (length > 0) {
            m_writer.Seek(record.Sector() * kSectorSize);
            m_writer.CopyListed(file.path, length);
        }
        m_operation.SetPane(EPane::Bytes, BytesText(m_writer.Output().Size()));
    }

    void CheckLength(const SPlacement& file, std::int64_t length, const SContentFile& record,
                     const CRecordedFiles& records) {
        if (length == record.Size()) {
            return;
        }
        const SContentFile* const other = records.SharesSectorsWith(record);
        if (record.Size() == 0 && other != nullptr) {
            m_operation.Fail(Format("%s has %lld bytes, but the image records it as empty, at the sector of %s",
                                    file.path.c_str(), static_cast<long long>(length), other->path.c_str()));
        }
        m_operation.Fail(Format("%s has %lld bytes, but the image records %lld: an exact rebuild takes unchanged files",
                                file.path.c_str(), static_cast<long long>(length),
                                static_cast<long long>(record.Size())));
    }

    /// Two names of one place must have the same content.
    void CheckSharedSectors(const SPlacement& file, const SContentFile& record) {
        const SChecksum sum = m_writer.ListedChecksum();
        const auto [earlier, isFirst] = m_bySector.try_emplace(record.Sector(), file.path, sum);
        if (!isFirst && earlier->second.second != sum) {
            m_operation.Fail(Format("%s and %s are two names of the same sectors, but their contents differ",
                                    earlier->second.first.c_str(), file.path.c_str()));
        }
    }

    void ExtendToLength() {
        const std::int64_t end = m_writer.Output().Size();
        m_writer.Seek(end);
        m_writer.WriteZeros(m_length - end);
    }

    void CheckImage() {
        CWrittenImage image(m_writer.Output());
        const SChecksum sum = ChecksumOf(image, [this] { m_operation.Yield(); });
        if (m_writer.Output().HasFailed()) {
            m_operation.Fail(m_writer.Output().Problem());
        }
        if (sum != m_gaps.Origin().image) {
            m_operation.Fail(
                Format("The image would differ from the one that %s was exported from: a file or the leading "
                       "structures have changed",
                       m_request.layoutPath.c_str()));
        }
    }

    const SRebuildRequest& m_request;
    const CLayoutPass& m_pass;
    CPlacements& m_placements;
    COperation& m_operation;
    CImageWriter m_writer;
    CGapFileReader m_gaps;
    std::int64_t m_length = 0;
    /// Path and checksum of the first file placed at each sector that several files share.
    std::map<std::uint32_t, std::pair<std::string, SChecksum>> m_bySector;
};

}  // namespace

void RebuildExactly(const SRebuildRequest& request, const CLayoutPass& pass, CPlacements& placements,
                    COperation& operation) {
    CExactRebuild(request, pass, placements, operation).Run();
}

}  // namespace vantrel
