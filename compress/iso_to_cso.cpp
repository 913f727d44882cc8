// An image into a CSO file, block by block.
#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <span>

#include "compress/block_report.h"
#include "compress/buffer.h"
#include "compress/cso.h"
#include "compress/cso_header.h"
#include "compress/finish.h"
#include "compress/psp_image.h"
#include "compress/raw_deflate.h"
#include "files/byte_order.h"
#include "files/input_file.h"
#include "files/path.h"
#include "operation/frame.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr int kMemoryLevel = 8;

/// Length of the image in bytes. It is a signed 32-bit quantity here, so 2 GiB and more count as unknown.
std::uint64_t ImageLength(const SCompressionRequest& request, COperation& operation) {
    CInputFile image;
    if (!image.Open(request.imagePath)) {
        operation.Fail(Format("Code 10010e - Error Opening %s", request.imagePath.c_str()));
    }
    const std::int64_t length = image.Size();
    if (length < 0 || length > std::numeric_limits<std::int32_t>::max()) {
        operation.Fail(Format("Code 1003-Can't get file siz %s\n", request.imagePath.c_str()));
    }
    return static_cast<std::uint64_t>(length);
}

/// Compresses blocks one by one, each with a stream of its own.
class CBlockDeflater {
public:
    CBlockDeflater(COperation& operation, int level) : m_operation(operation), m_level(level) {}

    /// Begins the stream of a block.
    void Begin() {
        m_stream = {};
        if (deflateInit2(&m_stream, m_level, Z_DEFLATED, kRawDeflateWindow, kMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
            m_operation.Fail(Format("Code 1005-deflateInit%s\n", MessageOf(m_stream)));
        }
        m_open = true;
    }

    /// Deflates the block; the number of bytes put into `output`.
    std::size_t Deflate(std::int32_t block, std::span<const std::uint8_t> input, std::span<std::uint8_t> output) {
        m_stream.next_in = const_cast<Bytef*>(input.data());
        m_stream.avail_in = static_cast<uInt>(input.size());
        m_stream.next_out = output.data();
        m_stream.avail_out = static_cast<uInt>(output.size());
        const int result = deflate(&m_stream, Z_FINISH);
        if (result != Z_STREAM_END) {
            m_operation.Fail(Format("Code 1008-block %d:deflate : %s[%d]\n", block, MessageOf(m_stream), result));
        }
        return output.size() - m_stream.avail_out;
    }

    void End() {
        m_open = false;
        if (deflateEnd(&m_stream) != Z_OK) {
            m_operation.Fail(Format("Code 1010-deflateEnd : %s\n", MessageOf(m_stream)));
        }
    }

    CBlockDeflater(const CBlockDeflater&) = delete;
    CBlockDeflater& operator=(const CBlockDeflater&) = delete;
    ~CBlockDeflater() {
        if (m_open) {
            deflateEnd(&m_stream);
        }
    }

private:
    COperation& m_operation;
    int m_level;
    z_stream m_stream = {};
    bool m_open = false;
};

/// One run of IsoToCso after its checks: the files, the buffers and the place reached.
class CCsoWriter {
public:
    CCsoWriter(const SCompressionRequest& request, COperation& operation, std::uint64_t imageLength)
        : m_request(request), m_operation(operation) {
        m_header.total_bytes = imageLength;
        m_blockCount = m_header.BlockCount();
    }

    void Run(int level) {
        OpenFiles();
        m_operation.SetPane(EPane::Bytes, std::to_string(m_blockCount) + " Frames");
        m_operation.SetPane(EPane::File, FileNameOf(m_request.outputPath));
        m_operation.StartProgress(ProgressRange(static_cast<std::int64_t>(m_blockCount)), EProgressFill::Dvd);
        AllocateBuffers();
        WriteHeaderAndIndex(0);
        CompressBlocks(level);
        WriteIndex();
        m_image.Close();
        FinishConversion(m_request, m_output, "Compression iso2cso Done !", m_operation);
    }

private:
    void OpenFiles() {
        if (!m_image.Open(m_request.imagePath)) {
            m_operation.Fail(Format("Code 10010f - Error Opening %s", m_request.imagePath.c_str()));
        }
        if (!m_output.Open(m_request.outputPath, m_request.manner)) {
            m_operation.Fail(Format("Code 10010g - Error create %s", m_request.outputPath.c_str()));
        }
    }

    void AllocateBuffers() {
        m_index = TryAllocate((m_blockCount + 1) * kCsoEntrySize);
        m_input = TryAllocate(m_header.block_size);
        m_stored = TryAllocate(kStoredRoom * m_header.block_size);
        if (!m_index || !m_input || !m_stored) {
            m_operation.Fail(Format("Code 1004-Can't allocate memory %s\n", m_request.imagePath.c_str()));
        }
    }

    std::span<std::uint8_t> Index() {
        return {m_index.get(), static_cast<std::size_t>((m_blockCount + 1) * kCsoEntrySize)};
    }

    void SetEntry(std::uint64_t block, std::uint32_t entry) {
        const auto bytes = Le32(entry);
        std::copy(bytes.begin(), bytes.end(), Index().subspan(static_cast<std::size_t>(block) * kCsoEntrySize).begin());
    }

    void WriteHeaderAndIndex(std::int32_t block) {
        if (!m_output.Write(m_header.Encode()) || !m_output.Write(Index())) {
            FailWriting(block);
        }
    }

    [[noreturn]] void FailWriting(std::int32_t block) {
        m_operation.Fail(Format("Code 1009-block %d : Write error\n", block));
    }

    void CompressBlocks(int level) {
        CBlockDeflater deflater(m_operation, level);
        CBlockReport report(m_operation, static_cast<std::int64_t>(m_blockCount), false);
        for (std::uint64_t block = 0; block < m_blockCount; ++block) {
            if (report.ShowWhenDue(static_cast<std::int64_t>(block))) {
                m_operation.PumpMessages();
            }
            m_operation.StepProgress();
            m_operation.PumpMessages();
            CompressBlock(static_cast<std::int32_t>(block), deflater);
        }
        SetEntry(m_blockCount, static_cast<std::uint32_t>(m_output.Position()));
        report.Show(static_cast<std::int64_t>(m_blockCount));
    }

    void CompressBlock(std::int32_t block, CBlockDeflater& deflater) {
        deflater.Begin();
        auto entry = static_cast<std::uint32_t>(m_output.Position());
        const std::span<std::uint8_t> input(m_input.get(), m_header.block_size);
        const std::span<std::uint8_t> stored(m_stored.get(), kStoredRoom * m_header.block_size);
        if (m_image.Read(input) != input.size()) {
            m_operation.Fail(Format("Code 1007-block %d : read error\n", block));
        }
        std::size_t size = deflater.Deflate(block, input, stored);
        if (size >= input.size()) {
            std::copy(input.begin(), input.end(), stored.begin());
            size = input.size();
            entry |= kCsoPlainBlock;
        }
        SetEntry(static_cast<std::uint64_t>(block), entry);
        if (!m_output.Write(stored.first(size))) {
            FailWriting(block);
        }
        deflater.End();
    }

    void WriteIndex() {
        if (!m_output.Seek(CsoHeader::kSize) || !m_output.Write(Index())) {
            FailWriting(static_cast<std::int32_t>(m_blockCount));
        }
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CsoHeader m_header;
    std::uint64_t m_blockCount = 0;
    CInputFile m_image;
    COutputFile m_output;
    Buffer m_index;
    Buffer m_input;
    Buffer m_stored;
};

}  // namespace

void IsoToCso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Compression ISO2CSO, please Wait");
    CheckPspImage(request, "Code 1001e", operation);
    DisableCommands(operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso,
                                ECommand::IsoToDax, ECommand::DaxToIso, ECommand::Browse, ECommand::CheckPostgap,
                                ECommand::IsoToCso, ECommand::CsoToIso});
    const std::optional<int> level = operation.CompressionLevel();
    if (!level) {
        return;
    }
    operation.EnableCommand(ECommand::CompressionLevel, false);
    CCsoWriter(request, operation, ImageLength(request, operation)).Run(*level);
}

}  // namespace vantrel
