// Writes an image block by block and reports the progress of every block. For the rebuilds only.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "files/checked_file.h"
#include "iml/rebuild/listed_files.h"
#include "iml/rebuild/placements.h"
#include "iml/rebuild/rebuild.h"
#include "operation/operation.h"
#include "operation/progress.h"

namespace vantrel {

class CImageWriter {
public:
    CImageWriter(const SRebuildRequest& request, CPlacements& placements, COperation& operation);

    COutputFile& Output() { return m_output; }
    CCheckedInput& Leading() { return m_leading; }
    /// Fails, if strict, for leading structures that could not be read.
    void CheckLeading();

    /// Creates the output (code 203), opens the leading structures (code 204) and copies them without their last
    /// `heldBack` bytes. Their file stays open. `leadingLast` is the last sector that the layout names for them; if
    /// strict, they must reach it.
    void Begin(std::int64_t heldBack, std::int32_t leadingLast);
    /// The length of the image after Begin.
    std::int64_t LeadingLength() const { return m_leadingLength; }
    /// Starts the second stage of writing behind the leading structures: reopens the window's lists (codes 206 and
    /// 2022) and the output (code 2022a).
    void BeginPlacing();

    /// Announces `blocks` blocks in total, and shows the length so far.
    void StartProgress(std::int64_t blocks);

    /// Opens a listed file (code 3041); its length in bytes.
    std::int64_t OpenListed(const std::string& path);
    /// Copies the first `length` bytes of the opened file to the current position and closes it.
    void CopyListed(const std::string& path, std::int64_t length);

    /// Writes sectors of zeros, each as a block; nothing if the count is not positive.
    void WriteGap(std::int64_t sectors);
    /// Write bytes that do not count as blocks.
    void Write(std::span<const std::uint8_t> bytes) { m_output.WriteOrFail(bytes); }
    void WriteZeros(std::int64_t count) { m_output.WriteZerosOrFail(count); }
    void Seek(std::int64_t position) { m_output.SeekOrFail(position); }
    /// Counts written blocks.
    void Advance(std::int64_t blocks) { m_progress->Advance(blocks); }

    /// Sets the volume space size to the number of whole sectors of the image.
    void CorrectVolumeSize();

    /// Commits the image, shows the end text and completes. Deletes the window's lists unless the completion ends
    /// early.
    void Finish(const char* statusText, const char* doneText);

private:
    void Copy(CCheckedInput& file, const std::string& path, std::int64_t length,
              const std::function<void(std::int64_t blocks)>& onPiece);
    void CheckRead(const CCheckedInput& file, bool complete, const std::string& path);

    const SRebuildRequest& m_request;
    CPlacements& m_placements;
    COperation& m_operation;
    CCheckedOutput m_output;
    CCheckedInput m_leading;
    CListedFiles m_listedFiles;
    CCheckedInput m_listed;
    std::int64_t m_leadingLength = 0;
    std::int64_t m_leadingBlocks = 0;
    std::optional<CProgress> m_progress;
    std::vector<std::uint8_t> m_buffer;
};

}  // namespace vantrel
