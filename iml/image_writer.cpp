#include "iml/image_writer.h"

#include <algorithm>

#include "operation/frame.h"
#include "operation/text.h"

namespace vantrel {

CImageWriter::CImageWriter(const SRebuildRequest& request, COperation& operation)
    : m_request(request),
      m_operation(operation),
      m_resolver(request.filesFolder),
      m_replaces(FileKindOf(request.outputPath) != EFileKind::Missing) {}

void CImageWriter::Begin(std::int64_t heldBack, std::int32_t leadingLast) {
    if (!m_output.Open(m_request.outputPath, m_request.manner)) {
        m_operation.Fail(Format("Code 203!!! file not found ==> %s", m_request.outputPath.c_str()));
    }
    if (!m_leading.Open(m_request.leadingPath)) {
        m_operation.Fail(Format("Code 204!!! file not found==> %s", m_request.leadingPath.c_str()));
    }
    const std::int64_t length = m_leading.Size() - heldBack;
    if (IsCareful() && m_replaces && IsSameFile(m_request.leadingPath, m_request.outputPath)) {
        m_operation.Fail(Format("The image would replace %s", m_request.leadingPath.c_str()));
    }
    if (IsCareful() && (length < 0 || length / kImageSector <= leadingLast)) {
        m_operation.Fail(Format("The file %s is shorter than the layout says", m_request.leadingPath.c_str()));
    }
    CopyLeading(length);
    m_leadingLength = m_output.Size();
}

void CImageWriter::CopyLeading(std::int64_t length) {
    for (std::int64_t rest = length; rest > 0; rest -= kImageSector) {
        const auto piece = std::span(m_block).first(static_cast<std::size_t>(std::min(rest, kImageSector)));
        const std::size_t count = m_leading.Read(piece);
        CheckRead(m_leading, count == piece.size(), m_request.leadingPath);
        std::fill(piece.begin() + static_cast<std::ptrdiff_t>(count), piece.end(), std::uint8_t{0});
        Write(piece);
        ++m_blocks;
        m_operation.PumpMessages();
    }
}

void CImageWriter::CheckRead(const CInputFile& file, bool complete, const std::string& path) {
    if (IsCareful() && (!complete || file.HasFailed())) {
        m_operation.Fail(Format("Cannot read all of %s", path.c_str()));
    }
}

void CImageWriter::BeginPlacing(CSideLists& lists) {
    if (!lists.EntryList().OpenForReading()) {
        m_operation.Fail(Format("Code 206 !!! file not found ==> %s", m_request.entryListPath.c_str()));
    }
    if (!lists.Bounds().OpenForReading()) {
        m_operation.Fail(Format("Code 2022 - Error Opening %s", m_request.boundsPath.c_str()));
    }
    if (!m_output.Reopen()) {
        m_operation.Fail(Format("Code 2022a - Error Opening %s", m_request.outputPath.c_str()));
    }
    Seek(m_leadingLength);
}

void CImageWriter::StartProgress(std::int64_t blocks, EProgressFill fill) {
    m_range = blocks;
    m_operation.StartProgress(ProgressRange(blocks), fill);
    m_operation.SetPane(EPane::Bytes, BytesText(m_leadingLength));
}

void CImageWriter::ShowBlockDone() {
    ++m_blocks;
    m_operation.SetPane(EPane::Percent, PercentText(PercentOf(m_blocks, m_range)));
    m_operation.SetProgressPosition(ProgressRange(std::min(m_blocks, m_range)));
    m_operation.PumpMessages();
}

std::int64_t CImageWriter::OpenListed(const std::string& path) {
    const std::string found = m_resolver.Resolve(path);
    // A pipe or a device would be waited for or read without end.
    if (FileKindOf(found) != EFileKind::File || !m_listed.Open(found)) {
        m_operation.Fail(Format("Code 3041 - Error!!! Opening [%s]", path.c_str()));
    }
    if (IsCareful() && m_replaces && IsSameFile(found, m_request.outputPath)) {
        m_operation.Fail(Format("The image would replace %s, which the layout lists", found.c_str()));
    }
    return std::max<std::int64_t>(m_listed.Size(), 0);
}

void CImageWriter::CopyListed(const std::string& path, std::int64_t length) {
    for (std::int64_t rest = length; rest > 0; rest -= kImageSector) {
        const auto piece = std::span(m_block).first(static_cast<std::size_t>(std::min(rest, kImageSector)));
        const std::size_t count = m_listed.Read(piece);
        CheckRead(m_listed, count == piece.size(), path);
        std::fill(piece.begin() + static_cast<std::ptrdiff_t>(count), piece.end(), std::uint8_t{0});
        Write(piece);
        ShowBlockDone();
    }
    m_listed.Close();
}

void CImageWriter::WriteGap(std::int64_t sectors) {
    for (std::int64_t i = 0; i < sectors; ++i) {
        WriteZeros(kImageSector);
        ShowBlockDone();
    }
}

void CImageWriter::Write(std::span<const std::uint8_t> bytes) {
    if (!m_output.Write(bytes)) {
        m_operation.Fail(m_output.FailureText());
    }
}

void CImageWriter::WriteZeros(std::int64_t count) {
    if (!m_output.WriteZeros(count)) {
        m_operation.Fail(m_output.FailureText());
    }
}

void CImageWriter::Seek(std::int64_t position) {
    if (!m_output.Seek(position)) {
        m_operation.Fail(m_output.FailureText());
    }
}

void CImageWriter::CorrectVolumeSize() {
    const std::int64_t length = m_output.Size();
    Seek(kVolumeSizePosition);
    Write(VolumeSizeField(length));
}

void CImageWriter::Finish(CSideLists& lists, const char* statusText, const char* doneText) {
    m_leading.Close();
    lists.EndReading();
    if (!m_output.Commit()) {
        m_operation.Fail(m_output.FailureText());
    }
    m_operation.SetPane(EPane::Status, statusText);
    m_operation.SetPane(EPane::File, m_request.outputPath);
    if (m_operation.Complete(doneText)) {
        lists.Remove();
    }
}

}  // namespace vantrel
