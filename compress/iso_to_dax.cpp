// An image into a DAX file, frame by frame.
#include <algorithm>
#include <limits>
#include <optional>
#include <span>

#include "compress/blocks_ahead.h"
#include "compress/buffer.h"
#include "compress/dax.h"
#include "compress/dax_header.h"
#include "compress/deflated_piece.h"
#include "compress/finish.h"
#include "compress/psp_image.h"
#include "files/byte_order.h"
#include "files/input_file.h"
#include "files/path.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::int64_t kLargestPosition = std::numeric_limits<std::uint32_t>::max();

/// One run of IsoToDax: the files, the tables and the place reached.
class CDaxWriter {
public:
    CDaxWriter(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation), m_sharing(SharingOf(request, kDaxFrameSizes)) {}

    void OpenFiles() {
        if (!m_image.Open(m_request.imagePath, ESharing::Readers)) {
            m_operation.Fail(Format("Code 903- Cannot open input file %s\n", m_request.imagePath.c_str()));
        }
        if (!m_output.Open(m_request.outputPath, m_request.manner, ESharing::Nobody)) {
            m_operation.Fail(Format("Code 903o-Cannot create output file %s\n", m_request.outputPath.c_str()));
        }
    }

    /// Ends without a level: both files remain open, and so protected, as long as the program runs.
    void LeaveOpen() {
        m_image.LeaveOpen();
        m_output.LeaveOpen();
    }

    void Run(int level) {
        TakeImageSize();
        AllocateTables();
        WriteOrFail(m_header.Encode());
        WriteTables();
        CompressFrames(level);
        m_image.Close();
        if (!m_output.Seek(DaxHeader::kSize)) {
            m_operation.Fail("I/O error setting file pointer.\n");
        }
        WriteTables();
        FinishConversion(m_request, m_output, "Compression iso2dax Done !", m_operation);
    }

private:
    void TakeImageSize() {
        const std::int64_t size = m_image.Size();
        m_header.image_size = static_cast<std::uint32_t>(size);
        m_wholeFrames = m_header.image_size / kDaxFrameSize;
        m_operation.SetPane(EPane::Bytes, std::to_string(m_wholeFrames) + " Frames");
        m_operation.SetPane(EPane::File, m_request.shownName);
        m_operation.StartProgress(ProgressRange(m_wholeFrames), EProgressFill::Dvd);
        if (size < 0 || size >= kLargestPosition) {
            m_operation.Fail("Error getting file size.\n");
        }
    }

    void AllocateTables() {
        m_frameCount = m_header.FrameCount();
        m_positions = TryAllocate(std::uint64_t{m_frameCount} * kDaxPositionSize);
        m_lengths = TryAllocate(std::uint64_t{m_frameCount} * kDaxLengthSize);
        m_places = PlacesOf<CDeflatedPiece>(m_sharing, kDaxFrameSizes, m_frameCount);
        if (!m_positions || !m_lengths || m_places.empty()) {
            m_operation.Fail("Not enough memory for the frame tables!\n");
        }
    }

    void WriteTables() {
        WriteOrFail({m_positions.get(), std::size_t{m_frameCount} * kDaxPositionSize});
        WriteOrFail({m_lengths.get(), std::size_t{m_frameCount} * kDaxLengthSize});
    }

    void WriteOrFail(std::span<const std::uint8_t> bytes) {
        if (!m_output.Write(bytes)) {
            m_operation.Fail("I/O write error.\n");
        }
    }

    void CompressFrames(int level) {
        ReadAndWriteFrames(level);
        const bool complete = m_frame == m_frameCount && !m_image.HasFailed();
        if (m_request.manner != EOutputManner::InPlace && !complete) {
            m_operation.Fail("I/O error reading " + m_request.imagePath + "\n");
        }
    }

    /// The image ends with the first frame that is not full, or behind the last one.
    void ReadAndWriteFrames(int level) {
        CBlocksAhead<CDeflatedPiece> frames(m_sharing, std::uint64_t{m_frameCount} + 1, std::move(m_places), m_image,
                                            {EStreamForm::Zlib, level});
        std::size_t count = 0;
        do {
            const SDeflatedBlock& frame = frames.Next();
            count = frame.input.size();
            if (count > 0) {
                WriteFrame(frame);
            }
            m_operation.StepProgress();
            m_operation.PumpMessages();
        } while (count == kDaxFrameSize);
    }

    void WriteFrame(const SDeflatedBlock& frame) {
        if (m_frame == m_frameCount) {
            m_operation.Fail("Error getting file size.\n");  // the image grows while it is read
        }
        CheckStream(frame.outcome);
        const std::int64_t position = m_output.Position();
        if (position > kLargestPosition) {
            m_operation.Fail("I/O write error.\n");  // a position that the table cannot hold
        }
        WriteOrFail(frame.stored);
        std::ranges::copy(Le32(static_cast<std::uint32_t>(position)),
                          m_positions.get() + std::size_t{m_frame} * kDaxPositionSize);
        std::ranges::copy(Le16(static_cast<std::uint16_t>(frame.stored.size())),
                          m_lengths.get() + std::size_t{m_frame} * kDaxLengthSize);
        ++m_frame;
        m_operation.SetPane(EPane::Percent, PercentText(PercentOf(m_frame, m_wholeFrames)));
    }

    void CheckStream(const SStreamOutcome& outcome) {
        // A stream that is begun and not ended wants more room.
        if (outcome.FailedIn(EStreamStep::Work) && (outcome.result == Z_OK || outcome.result == Z_BUF_ERROR)) {
            m_operation.Fail("Not enough memory in compressed buffer!\n");
        }
        if (outcome.failed && !outcome.FailedIn(EStreamStep::End)) {
            m_operation.Fail("Memory error while compressing.");
        }
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    DaxHeader m_header;
    std::uint32_t m_wholeFrames = 0;
    std::uint32_t m_frameCount = 0;
    std::uint32_t m_frame = 0;
    CInputFile m_image;
    COutputFile m_output;
    Buffer m_positions;
    Buffer m_lengths;
    SSharing m_sharing;
    std::vector<CDeflatedPiece> m_places;
};

}  // namespace

void IsoToDax(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Compression ISO2DAX, please Wait");
    CheckPspImage(request, "Code 9101e", operation);
    CDaxWriter writer(request, operation);
    writer.OpenFiles();
    DisableFrameCommands(operation);
    const std::optional<int> level = operation.CompressionLevel();
    if (!level) {
        writer.LeaveOpen();
        return;
    }
    operation.EnableCommand(ECommand::CompressionLevel, false);
    writer.Run(*level);
}

}  // namespace vantrel
