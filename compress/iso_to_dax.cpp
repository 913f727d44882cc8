// An image into a DAX file, frame by frame.
#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <span>

#include "compress/buffer.h"
#include "compress/dax.h"
#include "compress/dax_header.h"
#include "compress/finish.h"
#include "compress/psp_image.h"
#include "files/byte_order.h"
#include "files/input_file.h"
#include "files/path.h"
#include "operation/frame.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::int64_t kLargestPosition = std::numeric_limits<std::uint32_t>::max();

/// One run of IsoToDax: the files, the tables and the place reached.
class CDaxWriter {
public:
    CDaxWriter(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation) {}

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
        if (!m_positions || !m_lengths) {
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
        std::array<std::uint8_t, kDaxFrameSize> frame;
        std::size_t count = 0;
        do {
            count = m_image.Read(frame);
            if (count > 0) {
                CompressFrame(std::span(frame).first(count), level);
            }
            m_operation.StepProgress();
            m_operation.PumpMessages();
        } while (count == frame.size());
        const bool complete = m_frame == m_frameCount && !m_image.HasFailed();
        if (m_request.manner != EOutputManner::InPlace && !complete) {
            m_operation.Fail("I/O error reading " + m_request.imagePath + "\n");
        }
    }

    void CompressFrame(std::span<const std::uint8_t> frame, int level) {
        if (m_frame == m_frameCount) {
            m_operation.Fail("Error getting file size.\n");  // the image grows while it is read
        }
        std::array<std::uint8_t, kDaxStoredRoom> stored;
        auto length = static_cast<uLongf>(stored.size());
        const int result = compress2(stored.data(), &length, frame.data(), static_cast<uLong>(frame.size()), level);
        if (result == Z_BUF_ERROR) {
            m_operation.Fail("Not enough memory in compressed buffer!\n");
        }
        if (result != Z_OK) {
            m_operation.Fail("Memory error while compressing.");
        }
        const std::int64_t position = m_output.Position();
        if (position > kLargestPosition) {
            m_operation.Fail("I/O write error.\n");  // a position that the table cannot hold
        }
        WriteOrFail(std::span(stored).first(length));
        std::ranges::copy(Le32(static_cast<std::uint32_t>(position)),
                          m_positions.get() + std::size_t{m_frame} * kDaxPositionSize);
        std::ranges::copy(Le16(static_cast<std::uint16_t>(length)),
                          m_lengths.get() + std::size_t{m_frame} * kDaxLengthSize);
        ++m_frame;
        m_operation.SetPane(EPane::Percent, PercentText(PercentOf(m_frame, m_wholeFrames)));
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
