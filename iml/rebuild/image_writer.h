// Writing of an image block by block, with the progress that belongs to every block. For the rebuilds only.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "files/input_file.h"
#include "files/output_file.h"
#include "iml/layout/layout_path.h"
#include "iml/rebuild/rebuild.h"
#include "iml/rebuild/placements.h"
#include "iml/volume_size.h"
#include "operation/operation.h"

namespace vantrel {

class CImageWriter {
public:
    CImageWriter(const SRebuildRequest& request, COperation& operation);

    COutputFile& Output() { return m_output; }
    CInputFile& Leading() { return m_leading; }
    /// Refuses, outside the window, leading structures that could not be read.
    void CheckLeading() { CheckRead(m_leading, true, m_request.leadingPath); }

    /// Creates the output, opens the leading structures and copies them without their last `heldBack` bytes, but never
    /// more than `mostBytes`. Their file stays open. `leadingLast` is the last sector that the layout names for them,
    /// which outside the window they must reach.
    void Begin(std::int64_t heldBack, std::int32_t leadingLast,
               std::int64_t mostBytes = std::numeric_limits<std::int64_t>::max());
    /// The image's length after that.
    std::int64_t LeadingLength() const { return m_leadingLength; }
    /// Opens the side lists and the output for the second stage of writing, which begins behind the leading structures.
    void BeginPlacing(CSideLists& lists);

    /// Creates the bar over `blocks` blocks and shows the length reached.
    void StartProgress(std::int64_t blocks, EProgressFill fill);

    /// Opens a listed file and gives its length.
    std::int64_t OpenListed(const std::string& path);
    /// Copies the first `length` bytes of the opened file to the current position and closes it.
    void CopyListed(const std::string& path, std::int64_t length);

    /// Writes sectors of zeros as so many blocks; nothing for a count that is not positive.
    void WriteGap(std::int64_t sectors);
    /// Writes bytes that count as no block.
    void Write(std::span<const std::uint8_t> bytes);
    void WriteZeros(std::int64_t count);
    void Seek(std::int64_t position);
    /// Counts written blocks: percentage, bar, messages.
    void ShowBlocksDone(std::int64_t blocks);

    /// Puts the image's whole sectors into its volume descriptor.
    void CorrectVolumeSize();

    /// Gives the image its name, shows the end text, runs the completion and deletes the side lists behind it; they
    /// stay when the completion is left early.
    void Finish(CSideLists& lists, const char* statusText, const char* doneText);

    /// Whether what the window lets pass is refused.
    bool IsCareful() const { return m_request.manner != EOutputManner::InPlace; }

private:
    /// Length in bytes; fails when it cannot be told.
    std::int64_t LengthOf(const CInputFile& file, const std::string& path);
    void Copy(CInputFile& file, const std::string& path, std::int64_t length,
              const std::function<void(std::int64_t blocks)>& onPiece);
    void CheckWritten(bool written);
    void CheckRead(const CInputFile& file, bool complete, const std::string& path);

    const SRebuildRequest& m_request;
    COperation& m_operation;
    CPathResolver m_resolver;
    COutputFile m_output;
    CInputFile m_leading;
    CInputFile m_listed;
    bool m_replaces;                ///< Whether the target exists, so that it might be one of the listed files.
    std::int64_t m_replacedLength;  ///< Its length, which the same file has; −1 when it cannot be told.
    std::int64_t m_leadingLength = 0;
    std::int64_t m_blocks = 0;
    std::int64_t m_range = 1;
    std::vector<std::uint8_t> m_piece;  ///< What is copied at once.
};

}  // namespace vantrel
