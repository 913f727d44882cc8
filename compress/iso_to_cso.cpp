// An image into a CSO file, block by block.
#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <span>

#include "compress/block_report.h"
#include "compress/blocks_ahead.h"
#include "compress/buffer.h"
#include "compress/cso.h"
#include "compress/cso_header.h"
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

/// One run of IsoToCso after its checks: the files, the buffers and the place reached.
class CCsoWriter {
public:
    CCsoWriter(const SCompressionRequest& request, COperation& operation, std::uint64_t imageLength)
        : m_request(request), m_operation(operation) {
        m_header.total_bytes = imageLength;
        m_blockCount = m_header.BlockCount();
        m_sharing = SharingOf(request, m_sizes);
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
        m_places = PlacesOf<CDeflatedPiece>(m_sharing, m_sizes, m_blockCount);
        if (!m_index || m_places.empty()) {
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
        CBlocksAhead<CDeflatedPiece> blocks(m_sharing, m_blockCount, std::move(m_places), m_image,
                                            {EStreamForm::Raw, level});
        CBlockReport report(m_operation, static_cast<std::int64_t>(m_blockCount), false);
        for (std::uint64_t block = 0; block < m_blockCount; ++block) {
            if (report.ShowWhenDue(static_cast<std::int64_t>(block))) {
                m_operation.PumpMessages();
            }
            m_operation.StepProgress();
            m_operation.PumpMessages();
            WriteBlock(static_cast<std::int32_t>(block), blocks.Next());
        }
        SetEntry(m_blockCount, static_cast<std::uint32_t>(m_output.Position()));
        report.Show(static_cast<std::int64_t>(m_blockCount));
    }

    void WriteBlock(std::int32_t number, const SDeflatedBlock& block) {
        const SStreamOutcome& outcome = block.outcome;
        if (outcome.FailedIn(EStreamStep::Begin)) {
            m_operation.Fail(Format("Code 1005-deflateInit%s\n", outcome.message));
        }
        if (block.input.size() != m_header.block_size) {
            m_operation.Fail(Format("Code 1007-block %d : read error\n", number));
        }
        if (outcome.FailedIn(EStreamStep::Work)) {
            m_operation.Fail(Format("Code 1008-block %d:deflate : %s[%d]\n", number, outcome.message, outcome.result));
        }
        // What does not shrink is stored plain.
        const bool plain = block.stored.size() >= block.input.size();
        SetEntry(static_cast<std::uint64_t>(number),
                 static_cast<std::uint32_t>(m_output.Position()) | (plain ? kCsoPlainBlock : 0));
        if (!m_output.Write(plain ? block.input : block.stored)) {
            FailWriting(number);
        }
        if (outcome.FailedIn(EStreamStep::End)) {
            m_operation.Fail(Format("Code 1010-deflateEnd : %s\n", outcome.message));
        }
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
    SBlockSizes m_sizes{m_header.block_size, kCsoStoredRoom* m_header.block_size};
    SSharing m_sharing;
    std::vector<CDeflatedPiece> m_places;
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
