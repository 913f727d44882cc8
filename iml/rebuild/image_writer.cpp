#include "iml/rebuild/image_writer.h"

#include <algorithm>

#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// What is copied at once where nobody looks at every block.
constexpr std::size_t kPieceSize = 1U << 20U;

std::int64_t BlocksOf(std::int64_t bytes) {
    return (bytes + kImageSector - 1) / kImageSector;
}

}  // namespace

CImageWriter::CImageWriter(const SRebuildRequest& request, COperation& operation)
    : m_request(request),
      m_operation(operation),
      m_resolver(request.filesFolder),
      m_replaces(FileKindOf(request.outputPath) != EFileKind::Missing),
      m_replacedLength(FileSizeOf(request.outputPath)),
      m_piece(request.manner == EOutputManner::InPlace ? kImageSector : kPieceSize) {}

void CImageWriter::Begin(std::int64_t heldBack, std::int32_t leadingLast, std::int64_t mostBytes) {
    if (!m_output.Open(m_request.outputPath, m_request.manner)) {
        m_operation.Fail(Format("Code 203!!! file not found ==> %s", m_request.outputPath.c_str()));
    }
    if (!m_leading.Open(m_request.leadingPath)) {
        m_operation.Fail(Format("Code 204!!! file not found==> %s", m_request.leadingPath.c_str()));
    }
    const std::int64_t length = LengthOf(m_leading, m_request.leadingPath) - heldBack;
    if (IsCareful() && m_replaces && IsSameFile(m_request.leadingPath, m_request.outputPath)) {
        m_operation.Fail(Format("The image would replace %s", m_request.leadingPath.c_str()));
    }
    if (IsCareful() && (length < 0 || length / kImageSector <= leadingLast)) {
        m_operation.Fail(Format("The file %s is shorter than the layout says", m_request.leadingPath.c_str()));
    }
    Copy(m_leading, m_request.leadingPath, std::min(length, mostBytes), [this](std::int64_t blocks) {
        m_blocks += blocks;
        m_operation.PumpMessages();
    });
    CheckLeading();
    m_leadingLength = m_output.Size();
}

void CImageWriter::Copy(CInputFile& file, const std::string& path, std::int64_t length,
                        const std::function<void(std::int64_t blocks)>& onPiece) {
    const auto pieceSize = static_cast<std::int64_t>(m_piece.size());
    for (std::int64_t done = 0; done < length; done += pieceSize) {
        const auto piece = std::span(m_piece).first(static_cast<std::size_t>(std::min(length - done, pieceSize)));
        const std::size_t count = m_output.Copy(file, done, piece);
        CheckWritten(!m_output.HasFailed());
        CheckRead(file, count == piece.size(), path);
        WriteZeros(static_cast<std::int64_t>(piece.size() - count));
        onPiece(BlocksOf(static_cast<std::int64_t>(piece.size())));
    }
}

void CImageWriter::CheckWritten(bool written) {
    if (!written) {
        m_operation.Fail(m_output.FailureText());
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

void CImageWriter::ShowBlocksDone(std::int64_t blocks) {
    m_blocks += blocks;
    ShowStretchDone(m_operation, m_blocks, m_range);
}

std::int64_t CImageWriter::OpenListed(const std::string& path) {
    const std::string found = m_resolver.Resolve(path);
    // A pipe or a device would be waited for or read without end.
    if (FileKindOf(found) != EFileKind::File || !m_listed.Open(found)) {
        m_operation.Fail(Format("Code 3041 - Error!!! Opening [%s]", path.c_str()));
    }
    const std::int64_t length = LengthOf(m_listed, path);
    const bool mayBeReplaced = m_replaces && (m_replacedLength < 0 || m_replacedLength == length);
    if (IsCareful() && mayBeReplaced && IsSameFile(found, m_request.outputPath)) {
        m_operation.Fail(Format("The image would replace %s, which the layout lists", found.c_str()));
    }
    return length;
}

std::int64_t CImageWriter::LengthOf(const CInputFile& file, const std::string& path) {
    const std::int64_t length = file.Size();
    if (length < 0) {
        m_operation.Fail(Format("Cannot read all of %s", path.c_str()));
    }
    return length;
}

void CImageWriter::CopyListed(const std::string& path, std::int64_t length) {
    Copy(m_listed, path, length, [this](std::int64_t blocks) { ShowBlocksDone(blocks); });
    m_listed.Close();
}

void CImageWriter::WriteGap(std::int64_t sectors) {
    const std::int64_t pieceBlocks = BlocksOf(static_cast<std::int64_t>(m_piece.size()));
    for (std::int64_t rest = sectors; rest > 0; rest -= pieceBlocks) {
        const std::int64_t blocks = std::min(rest, pieceBlocks);
        WriteZeros(blocks * kImageSector);
        ShowBlocksDone(blocks);
    }
}

void CImageWriter::Write(std::span<const std::uint8_t> bytes) {
    CheckWritten(m_output.Write(bytes));
}

void CImageWriter::WriteZeros(std::int64_t count) {
    CheckWritten(m_output.WriteZeros(count));
}

void CImageWriter::Seek(std::int64_t position) {
    CheckWritten(m_output.Seek(position));
}

void CImageWriter::CorrectVolumeSize() {
    const std::int64_t length = m_output.Size();
    Seek(kVolumeSizePosition);
    Write(VolumeSizeField(length));
}

void CImageWriter::Finish(CSideLists& lists, const char* statusText, const char* doneText) {
    CheckLeading();
    m_leading.Close();
    lists.EndReading();
    if (lists.HasFailedReading()) {
        m_operation.Fail(Format("Cannot read all that was listed of %s", m_request.layoutPath.c_str()));
    }
    CheckWritten(m_output.Commit());
    m_operation.SetPane(EPane::Status, statusText);
    m_operation.SetPane(EPane::File, m_request.outputPath);
    if (m_operation.Complete(doneText)) {
        lists.Remove();
    }
}

}  // namespace vantrel
