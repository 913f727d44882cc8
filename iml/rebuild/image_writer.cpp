#include "iml/rebuild/image_writer.h"

#include <algorithm>

#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Copy size when progress is not shown for every block.
constexpr std::size_t kLargeBuffer = 1U << 20U;

}  // namespace

CImageWriter::CImageWriter(const SRebuildRequest& request, CPlacements& placements, COperation& operation)
    : m_request(request),
      m_placements(placements),
      m_operation(operation),
      m_output(operation),
      m_leading(operation),
      m_listedFiles(request, operation),
      m_listed(operation),
      m_buffer(request.strict ? kLargeBuffer : kSectorSize) {}

void CImageWriter::Begin(std::int64_t heldBack, std::int32_t leadingLast) {
    // First the input, so that an older image stays if it is missing.
    m_leading.OpenOrFail(m_request.leadingPath, "Code 204!!! file not found==> %s");
    m_output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 203!!! file not found ==> %s");
    const std::int64_t length = m_leading.SizeOrFail() - heldBack;
    if (m_request.strict && ReplacesLeading(m_request)) {
        m_operation.Fail(Format("The image would replace %s", m_request.leadingPath.c_str()));
    }
    if (m_request.strict && (length < 0 || length / kSectorSize <= leadingLast)) {
        m_operation.Fail(Format("The file %s is shorter than the layout says", m_request.leadingPath.c_str()));
    }
    Copy(m_leading, m_request.leadingPath, length, [this](std::int64_t blocks) {
        m_leadingBlocks += blocks;
        m_operation.Yield();
    });
    CheckLeading();
    m_leadingLength = m_output.Size();
}

void CImageWriter::Copy(CCheckedInput& file, const std::string& path, std::int64_t length,
                        const std::function<void(std::int64_t blocks)>& onPiece) {
    const auto bufferSize = static_cast<std::int64_t>(m_buffer.size());
    for (std::int64_t done = 0; done < length; done += bufferSize) {
        const std::int64_t size = std::min(length - done, bufferSize);
        const auto piece = std::span(m_buffer).first(static_cast<std::size_t>(size));
        const std::size_t count = m_output.Copy(file, done, piece);
        m_output.FailIfUnwritten();
        CheckRead(file, count == piece.size(), path);
        WriteZeros(static_cast<std::int64_t>(piece.size() - count));
        onPiece(SectorsFor(size));
    }
}

void CImageWriter::CheckRead(const CCheckedInput& file, bool complete, const std::string& path) {
    if (!m_request.strict) {
        return;
    }
    file.FailIfUnread();
    if (!complete) {
        m_operation.Fail(Format("Cannot read all of %s", path.c_str()));
    }
}

void CImageWriter::CheckLeading() {
    CheckRead(m_leading, true, m_request.leadingPath);
}

void CImageWriter::BeginPlacing() {
    m_placements.ReopenFiles();
    m_output.ReopenOrFail("Code 2022a - Error Opening %s");
    Seek(m_leadingLength);
}

void CImageWriter::StartProgress(std::int64_t blocks) {
    m_progress.emplace(m_operation, blocks, m_leadingBlocks);
    m_operation.SetPane(EPane::Bytes, BytesText(m_leadingLength));
}

std::int64_t CImageWriter::OpenListed(const std::string& path) {
    m_listedFiles.OpenOrFail(path, m_listed);
    return m_listed.SizeOrFail();
}

void CImageWriter::CopyListed(const std::string& path, std::int64_t length) {
    Copy(m_listed, path, length, [this](std::int64_t blocks) { Advance(blocks); });
    m_listed.Close();
}

void CImageWriter::WriteGap(std::int64_t sectors) {
    const std::int64_t bufferBlocks = SectorsFor(static_cast<std::int64_t>(m_buffer.size()));
    for (std::int64_t left = sectors; left > 0; left -= bufferBlocks) {
        const std::int64_t blocks = std::min(left, bufferBlocks);
        WriteZeros(blocks * kSectorSize);
        Advance(blocks);
    }
}

void CImageWriter::CorrectVolumeSize() {
    const std::int64_t length = m_output.Size();
    Seek(kVolumeSizePosition);
    Write(VolumeSizeField(length));
}

void CImageWriter::Finish(const char* statusText, const char* doneText) {
    CheckLeading();
    m_leading.Close();
    m_output.CommitOrFail();
    m_operation.SetPane(EPane::Status, statusText);
    m_operation.SetPane(EPane::File, m_request.outputPath);
    if (m_operation.Complete(doneText)) {
        m_placements.RemoveFiles();
    }
}

}  // namespace vantrel
