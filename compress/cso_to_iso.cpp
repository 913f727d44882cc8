// A CSO file back into an image, block by block.
#include <zlib.h>

#include <algorithm>
#include <array>
#include <span>

#include "compress/block_report.h"
#include "compress/buffer.h"
#include "compress/cso.h"
#include "compress/cso_header.h"
#include "compress/finish.h"
#include "compress/raw_deflate.h"
#include "files/byte_order.h"
#include "files/input_file.h"
#include "files/path.h"
#include "operation/frame.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kPositionMask = ~kCsoPlainBlock;
/// A header that claims larger blocks is answered like a failing allocation: its buffers would take memory by claim
/// alone. Real files have blocks of 2 KiB, a few of up to 64 KiB.
constexpr std::uint32_t kLargestBlockSize = 1U << 20U;

/// One run of CsoToIso: the files, the buffers and the index.
class CCsoReader {
public:
    CCsoReader(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation) {}

    void Run() {
        OpenFiles();
        ReadHeader();
        m_operation.SetPane(EPane::Bytes, std::to_string(m_blockCount) + " Blocks");
        m_operation.SetPane(EPane::File, FileNameOf(m_request.outputPath));
        m_operation.StartProgress(ProgressRange(static_cast<std::int64_t>(m_blockCount)), EProgressFill::Dvd);
        m_operation.PumpMessages();
        ReadIndex();
        m_operation.PumpMessages();
        ExpandBlocks();
        m_input.Close();
        FinishConversion(m_request, m_output, "ciso decompress cso2iso Done !", m_operation);
    }

private:
    void OpenFiles() {
        // The first handle only proves that the file is there; what it reports names the output.
        if (!m_existence.Open(m_request.chosenPath)) {
            FailNamingOutput("Code 11010e - Error Opening %s");
        }
        if (!m_input.Open(m_request.chosenPath)) {
            m_operation.Fail(Format("Code 11010f - Error Opening %s", m_request.chosenPath.c_str()));
        }
        if (!m_output.Open(m_request.outputPath, m_request.manner)) {
            FailNamingOutput("Code 11010g - Error create %s");
        }
    }

    [[noreturn]] __attribute__((format(gnu_printf, 2, 0))) void FailNamingOutput(const char* pattern) {
        m_operation.Fail(Format(pattern, m_request.outputPath.c_str()));
    }

    void ReadHeader() {
        std::array<std::uint8_t, CsoHeader::kSize> bytes = {};
        if (m_input.Read(bytes) != bytes.size()) {
            FailNamingOutput("Code 11010e - Error Opening %s");
        }
        m_header = CsoHeader::Decode(bytes);
        if (m_header.magic != CsoHeader().magic || m_header.block_size == 0 || m_header.total_bytes == 0) {
            FailNamingOutput("Code 11011 - ciso file format error %s");
        }
        m_blockCount = m_header.BlockCount();
    }

    void ReadIndex() {
        const auto indexRoom =
            static_cast<std::uint64_t>(std::max<std::int64_t>(m_input.Size() - m_input.Position(), 0));
        if (m_blockCount >= indexRoom / kCsoEntrySize) {
            FailReadingIndex();
        }
        m_index = TryAllocate((m_blockCount + 1) * kCsoEntrySize);
        if (m_header.block_size <= kLargestBlockSize) {
            m_block = TryAllocate(m_header.block_size);
            m_stored = TryAllocate(std::uint64_t{kStoredRoom} * m_header.block_size);
        }
        if (!m_index || !m_block || !m_stored) {
            m_operation.Fail(Format("Code 1104-Can't allocate memory %s\n", m_request.chosenPath.c_str()));
        }
        const std::span index(m_index.get(), static_cast<std::size_t>((m_blockCount + 1) * kCsoEntrySize));
        if (m_input.Read(index) != index.size()) {
            FailReadingIndex();
        }
    }

    [[noreturn]] void FailReadingIndex() {
        m_operation.Fail(Format("Code 1105-file read error %s\n", m_request.chosenPath.c_str()));
    }

    std::uint32_t Entry(std::uint64_t block) const {
        return LoadLe32(
            std::span<const std::uint8_t, kCsoEntrySize>(m_index.get() + block * kCsoEntrySize, kCsoEntrySize));
    }

    void ExpandBlocks() {
        CBlockReport report(m_operation, static_cast<std::int64_t>(m_blockCount), true);
        for (std::uint64_t block = 0; block < m_blockCount; ++block) {
            m_operation.PumpMessages();
            if (report.ShowWhenDue(static_cast<std::int64_t>(block))) {
                m_operation.PumpMessages();
            }
            m_operation.StepProgress();
            ExpandBlock(block);
        }
        report.Show(static_cast<std::int64_t>(m_blockCount));
        m_operation.PumpMessages();
    }

    void ExpandBlock(std::uint64_t block) {
        z_stream stream = {};
        if (inflateInit2(&stream, kRawDeflateWindow) != Z_OK) {
            m_operation.Fail(Format("Code 1106-deflateInit%s\n", MessageOf(stream)));
        }
        const auto endInflate = [](z_stream* open) { inflateEnd(open); };
        std::unique_ptr<z_stream, decltype(endInflate)> owner(&stream, endInflate);

        const auto number = static_cast<std::int32_t>(block);
        const std::span<const std::uint8_t> stored = ReadStored(block);
        const bool plain = (Entry(block) & kCsoPlainBlock) != 0;
        const std::span<const std::uint8_t> expanded = plain ? stored : Inflate(number, stream, stored);
        if (!m_output.Write(expanded)) {
            m_operation.Fail(Format("Code 1110-block %d : Write error\n", number));
        }
        if (inflateEnd(owner.release()) != Z_OK) {
            m_operation.Fail(Format("Code 1111-inflateEnd: %s\n", MessageOf(stream)));
        }
    }

    /// The stored bytes of a block. Positions are 32-bit quantities; what lies beyond 2 GiB cannot be reached.
    std::span<const std::uint8_t> ReadStored(std::uint64_t block) {
        const std::uint32_t here = Entry(block) & kPositionMask;
        const std::uint32_t next = Entry(block + 1) & kPositionMask;
        const bool plain = (Entry(block) & kCsoPlainBlock) != 0;
        const std::uint64_t size = plain ? m_header.block_size : Shifted(next - here);
        const auto position = static_cast<std::int32_t>(static_cast<std::uint32_t>(Shifted(here)));
        if (size > std::uint64_t{kStoredRoom} * m_header.block_size ||
            m_input.ReadAt(position, {m_stored.get(), static_cast<std::size_t>(size)}) != size) {
            m_operation.Fail(Format("Code 1107-block %d : read error\n", static_cast<std::int32_t>(block)));
        }
        return {m_stored.get(), static_cast<std::size_t>(size)};
    }

    /// An index quantity in bytes. Shifts of 32 and more leave nothing of a 32-bit quantity.
    std::uint64_t Shifted(std::uint32_t quantity) const {
        return m_header.align < 32 ? static_cast<std::uint64_t>(quantity) << m_header.align : 0;
    }

    std::span<const std::uint8_t> Inflate(std::int32_t block, z_stream& stream, std::span<const std::uint8_t> stored) {
        stream.next_in = const_cast<Bytef*>(stored.data());
        stream.avail_in = static_cast<uInt>(stored.size());
        stream.next_out = m_block.get();
        stream.avail_out = m_header.block_size;
        if (inflate(&stream, Z_FULL_FLUSH) != Z_STREAM_END) {
            m_operation.Fail(Format("Code 1108-inflate : %s\n", MessageOf(stream)));
        }
        const std::uint32_t produced = m_header.block_size - stream.avail_out;
        if (produced != m_header.block_size) {
            m_operation.Fail(Format("Code 1109-block %d : block size error %d != %d\n", block,
                                    static_cast<std::int32_t>(produced),
                                    static_cast<std::int32_t>(m_header.block_size)));
        }
        return {m_block.get(), produced};
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CsoHeader m_header;
    std::uint64_t m_blockCount = 0;
    CInputFile m_existence;
    CInputFile m_input;
    COutputFile m_output;
    Buffer m_index;
    Buffer m_block;
    Buffer m_stored;
};

}  // namespace

void CsoToIso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "DeCompression CSO2ISO, please Wait");
    DisableFrameCommands(operation);
    if (!operation.CompressionLevel()) {
        return;
    }
    operation.EnableCommand(ECommand::CompressionLevel, false);
    CCsoReader(request, operation).Run();
}

}  // namespace vantrel
