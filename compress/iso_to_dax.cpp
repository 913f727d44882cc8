// Compresses an image into a DAX file, frame by frame.
#include <algorithm>
#include <limits>
#include <utility>

#include "compress/block_pipeline.h"
#include "compress/completion.h"
#include "compress/dax.h"
#include "compress/dax_header.h"
#include "compress/number_table.h"
#include "compress/psp_image.h"
#include "files/checked_file.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::int64_t kMaxPosition = std::numeric_limits<std::uint32_t>::max();

/// One run of IsoToDax.
class CDaxWriter {
public:
    CDaxWriter(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation) {}

    void OpenFiles() {
        m_image.AttachOrOpen(m_request.image, m_request.imagePath, "Code 903- Cannot open input file %s\n",
                             ESharing::Readers);
        m_output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 903o-Cannot create output file %s\n",
                            m_request.outputPath, ESharing::Nobody);
    }

    /// Leaves both files open, and therefore protected, until the program ends.
    void LeaveOpen() {
        m_image.LeaveOpen();
        m_output.LeaveOpen();
    }

    void Run(int level) {
        TakeImageSize();
        CompressFrames(level);
        m_image.Close();
        if (!m_output.Seek(DaxHeader::kSize)) {
            m_operation.Fail("I/O error setting file pointer.\n", m_output.Problem());
        }
        WriteTables();
        CheckAndCommit(m_request, m_output);
        CompleteConversion(m_request, m_output, m_wholeFrames, "Compression iso2dax Done !", m_operation);
    }

private:
    void TakeImageSize() {
        const std::int64_t size = m_image.Size();
        m_header.image_size = static_cast<std::uint32_t>(size);
        m_frameCount = m_header.FrameCount();
        m_wholeFrames = m_header.image_size / kDaxFrameSize;
        m_operation.SetPane(EPane::Bytes, std::to_string(m_wholeFrames) + " Frames");
        m_operation.SetPane(EPane::File, m_request.shownName);
        m_operation.SetTotal(m_wholeFrames);
        if (size < 0 || size >= kMaxPosition) {
            m_operation.Fail("Error getting file size.\n");
        }
    }

    void CompressFrames(int level) {
        // Reading one frame more than there are finds the end of the image.
        const SWorkPlan plan =
            PlanWork(m_request.workers, kDaxFrameSizes, std::uint64_t{m_frameCount} + 1, m_image.PieceUnit());
        std::vector<CBlockSlot> slots = AllocateSlots(plan, &m_image);
        if (!m_positions.Allocate(m_frameCount) || !m_lengths.Allocate(m_frameCount) || slots.empty()) {
            m_operation.Fail("Not enough memory for the frame tables!\n");
        }
        Write(m_header.Encode());
        WriteTables();
        CBlockPipeline frames(plan, std::move(slots), EStreamForm::Zlib, level);
        while (TakeFrame(frames.Next())) {
        }
        if (const std::string problem = frames.ImageProblem();
            m_request.strict && (m_frame != m_frameCount || !problem.empty())) {
            m_operation.Fail(Format("I/O error reading %s\n", m_request.imagePath.c_str()), problem);
        }
    }

    /// Returns whether more frames may follow: the image ends with the first frame that is not full.
    bool TakeFrame(const SBlock& frame) {
        if (!frame.content.empty()) {
            WriteFrame(frame);
        }
        m_operation.SetDone(std::min(m_frame, m_wholeFrames));
        m_operation.Yield();
        return frame.content.size() == kDaxFrameSize;
    }

    void WriteFrame(const SBlock& frame) {
        if (m_frame == m_frameCount) {
            m_operation.Fail("Error getting file size.\n");  // the image grows while it is read
        }
        CheckStream(frame.outcome);
        const std::int64_t position = m_output.Position();
        if (position > kMaxPosition) {
            m_operation.Fail("I/O write error.\n");  // the table cannot hold the position
        }
        Write(frame.stored);
        m_positions.Set(m_frame, static_cast<std::uint32_t>(position));
        m_lengths.Set(m_frame, static_cast<std::uint16_t>(frame.stored.size()));
        ++m_frame;
        ShowPercent(m_operation, m_frame, m_wholeFrames);
    }

    void CheckStream(const SStreamOutcome& outcome) {
        // zlib has more output than the buffer holds.
        if (outcome.FailedIn(EStreamStep::Work) && (outcome.result == Z_OK || outcome.result == Z_BUF_ERROR)) {
            m_operation.Fail("Not enough memory in compressed buffer!\n");
        }
        if (!outcome.HasAllOutput()) {
            m_operation.Fail("Memory error while compressing.");
        }
    }

    void WriteTables() {
        Write(m_positions.Bytes());
        Write(m_lengths.Bytes());
    }

    void Write(std::span<const std::uint8_t> bytes) {
        if (!m_output.Write(bytes)) {
            m_operation.Fail("I/O write error.\n", m_output.Problem());
        }
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    DaxHeader m_header;
    std::uint32_t m_frameCount = 0;
    std::uint32_t m_wholeFrames = 0;
    std::uint32_t m_frame = 0;
    CCheckedInput m_image{m_operation};
    CCheckedOutput m_output{m_operation};
    CNumberTable<std::uint32_t> m_positions;
    CNumberTable<std::uint16_t> m_lengths;
};

}  // namespace

void IsoToDax(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Compression ISO2DAX, please Wait");
    CheckPspImage(request, "Code 9101e - Error Opening %s", operation);
    CDaxWriter writer(request, operation);
    writer.OpenFiles();
    operation.Begin(EConversion::IsoToDax);
    if (request.level) {
        writer.Run(*request.level);
    } else {
        writer.LeaveOpen();
    }
}

void ImageToDax(const SCompressionRequest& request, COperation& operation) {
    CDaxWriter writer(request, operation);
    writer.OpenFiles();
    writer.Run(*request.level);
}

}  // namespace vantrel
