// A DAX file back into an image, frame by frame.
#include <zlib.h>

#include <algorithm>
#include <array>
#include <span>

#include "compress/buffer.h"
#include "compress/dax.h"
#include "compress/dax_header.h"
#include "files/byte_order.h"
#include "files/input_file.h"
#include "operation/frame.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr const char* kDoneText = "Decompression dax2iso Done !";

/// One run of DaxToIso: the files and the tables.
class CDaxReader {
public:
    CDaxReader(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation) {}

    void Run() {
        OpenFiles();
        DisableFrameCommands(m_operation);
        ReadHeader();
        m_operation.SetPane(EPane::Bytes, std::to_string(m_frameCount) + " Frames");
        m_operation.SetPane(EPane::File, m_request.shownName);
        m_operation.StartProgress(ProgressRange(m_frameCount), EProgressFill::Dvd);
        ReadTables();
        ExpandFrames();
        Finish();
    }

private:
    void OpenFiles() {
        // Each of the two texts names the other file; users know them that way.
        if (!m_input.Open(m_request.imagePath, ESharing::Readers)) {
            m_operation.Fail(Format("Code 1003- Cannot open input file %s\n", m_request.outputPath.c_str()));
        }
        if (!m_output.Open(m_request.outputPath, m_request.manner, ESharing::Nobody)) {
            m_operation.Fail(Format("Code 1003o-Cannot create output file %s\n", m_request.imagePath.c_str()));
        }
    }

    void ReadHeader() {
        std::array<std::uint8_t, DaxHeader::kSize> bytes = {};
        const bool whole = m_input.Read(bytes) == bytes.size();
        const DaxHeader header = DaxHeader::Decode(bytes);
        if (!whole || header.magic != DaxHeader::kMagic) {
            m_operation.Fail("Input is not a valid DAX file.\n");
        }
        m_frameCount = header.FrameCount();
    }

    void ReadTables() {
        m_positions = ReadTable(kDaxPositionSize);
        m_lengths = ReadTable(kDaxLengthSize);
    }

    Buffer ReadTable(std::uint32_t entrySize) {
        const std::uint64_t size = std::uint64_t{m_frameCount} * entrySize;
        const std::int64_t room = m_input.Size() - m_input.Position();
        if (room < 0 || static_cast<std::uint64_t>(room) < size) {
            m_operation.Fail("Corrupted input file.\n");
        }
        Buffer table = TryAllocate(size);
        if (!table) {
            m_operation.Fail("Not enough memory for the frame tables!\n");
        }
        if (m_input.Read({table.get(), static_cast<std::size_t>(size)}) != size) {
            m_operation.Fail("Corrupted input file.\n");
        }
        return table;
    }

    std::uint32_t Position(std::uint32_t frame) const {
        return LoadLe32(std::span<const std::uint8_t, kDaxPositionSize>(
            m_positions.get() + std::size_t{frame} * kDaxPositionSize, kDaxPositionSize));
    }

    std::uint16_t Length(std::uint32_t frame) const {
        return LoadLe16(std::span<const std::uint8_t, kDaxLengthSize>(
            m_lengths.get() + std::size_t{frame} * kDaxLengthSize, kDaxLengthSize));
    }

    void ExpandFrames() {
        for (std::uint32_t frame = 0; frame < m_frameCount; ++frame) {
            ExpandFrame(frame);
            m_operation.SetPane(EPane::Percent, PercentText(PercentOf(frame, m_frameCount)));
            if (m_request.manner != EOutputManner::InPlace) {
                m_operation.StepProgress();  // the window's bar waits for the end; a terminal's line moves on
            }
        }
        m_operation.StepProgress();
        m_operation.PumpMessages();
    }

    void ExpandFrame(std::uint32_t frame) {
        std::array<std::uint8_t, kDaxStoredRoom> room;
        std::array<std::uint8_t, kDaxFrameSize> expanded;
        const std::size_t stored = Length(frame);
        if (stored > room.size() || m_input.ReadAt(Position(frame), std::span(room).first(stored)) != stored) {
            m_operation.Fail("Input seems to be corrupted.\n");
        }
        uLongf length = expanded.size();
        if (uncompress(expanded.data(), &length, room.data(), static_cast<uLong>(stored)) != Z_OK) {
            m_operation.Fail("Error while decompressing (corrupt input?)\n");
        }
        if (!m_output.Write(std::span(expanded).first(length))) {
            m_operation.Fail("I/O error writing to output file.\n");
        }
    }

    /// In place, both files are closed only within the completion, and stay open when that is left early.
    void Finish() {
        const std::int64_t size = m_output.Size();
        if (m_request.manner != EOutputManner::InPlace && !m_output.Commit()) {
            m_operation.Fail(m_output.FailureText());
        }
        m_operation.SetPane(EPane::File, m_request.outputPath);
        m_operation.SetPane(EPane::Percent, "100%");
        m_operation.SetPane(EPane::Status, kDoneText);
        const bool completed = m_operation.Complete(kDoneText, [&] {
            m_output.Finish();
            m_input.Close();
            m_operation.SetPane(EPane::Bytes, BytesText(size));
        });
        if (!completed) {
            m_output.LeaveOpen();
            m_input.LeaveOpen();
        }
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    std::uint32_t m_frameCount = 0;
    CInputFile m_input;
    COutputFile m_output;
    Buffer m_positions;
    Buffer m_lengths;
};

}  // namespace

void DaxToIso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Decompressing DAX2ISO, please Wait");
    CDaxReader(request, operation).Run();
}

}  // namespace vantrel
