// Compresses an image into a CSO file, block by block.
#include <limits>
#include <utility>

#include "compress/block_pipeline.h"
#include "compress/completion.h"
#include "compress/cso.h"
#include "compress/cso_header.h"
#include "compress/lz4_encoder.h"
#include "compress/number_table.h"
#include "compress/psp_image.h"
#include "files/checked_file.h"
#include "files/path.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// What firmware reads.
constexpr std::uint32_t kUsualBlockSize = kSectorSize;
/// What other programs write and read where an index needs a shift.
constexpr std::uint32_t kLargeFileBlockSize = 16U * 1024U;

/// Length of the image in bytes. In the window it is a signed 32-bit number, so lengths of 2 GiB and more count as
/// unknown.
std::uint64_t ImageLength(const SCompressionRequest& request, COperation& operation) {
    CCheckedInput image(operation);
    image.AttachOrOpen(request.image, request.imagePath, "Code 10010e - Error Opening %s");
    const std::int64_t length = image.Size();
    if (length < 0 || (!request.strict && length > std::numeric_limits<std::int32_t>::max())) {
        operation.Fail(Format("Code 1003-Can't get file siz %s\n", request.imagePath.c_str()), image.Problem());
    }
    return static_cast<std::uint64_t>(length);
}

/// One compression after its checks.
class CCsoWriter {
public:
    CCsoWriter(const SCompressionRequest& request, COperation& operation) : m_request(request), m_operation(operation) {
        m_header.magic = request.magic;
        m_header.header_size = m_header.IsZso() ? static_cast<std::uint32_t>(CsoHeader::kSize) : 0;
        m_header.total_bytes = ImageLength(request, operation);
        UseBlockSize(request.blockSize.value_or(kUsualBlockSize));
    }

    void Run(int level) {
        m_image.AttachOrOpen(m_request.image, m_request.imagePath, "Code 10010f - Error Opening %s");
        m_output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 10010g - Error create %s");
        m_operation.SetPane(EPane::Bytes, std::to_string(m_blockCount) + " Frames");
        m_operation.SetPane(EPane::File, FileNameOf(m_request.outputPath));
        m_operation.SetTotal(m_blockCount);
        if (!CompressBlocks(level)) {
            RestartWithShift();
            CompressBlocks(level);
        }
        WriteIndex();
        m_image.Close();
        CheckAndCommit(m_request, m_output);
        CompleteConversion(m_request, m_output, m_blockCount, "Compression iso2cso Done !", m_operation);
    }

private:
    void UseBlockSize(std::uint32_t size) {
        m_header.block_size = size;
        m_blockCount = static_cast<std::int64_t>(m_request.strict ? m_header.BlockCount() : m_header.WholeBlockCount());
    }

    /// Bytes of the file if every block is stored plain behind the longest padding.
    std::uint64_t LargestSize(std::uint8_t shift) const {
        const auto blocks = static_cast<std::uint64_t>(m_blockCount);
        const std::uint64_t padding = (std::uint64_t{1} << shift) - 1;
        return CsoHeader::kSize + (blocks + 1) * (sizeof(std::uint32_t) + padding) + blocks * m_header.block_size;
    }

    /// Begins again with the shift that addresses the largest possible output.
    void RestartWithShift() {
        UseBlockSize(m_request.blockSize.value_or(kLargeFileBlockSize));
        const auto limit = static_cast<std::uint64_t>(m_request.largestCso);
        while (LargestSize(m_header.align) >> m_header.align > limit) {
            ++m_header.align;
        }
        m_operation.SetTotal(m_blockCount);
        m_output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 10010g - Error create %s");
    }

    /// Returns false if the index cannot address the output.
    bool CompressBlocks(int level) {
        const auto count = static_cast<std::uint64_t>(m_blockCount);
        SBlockSizes sizes = CsoBlockSizes(m_header.block_size);
        sizes.coder = m_header.IsZso() ? kLz4EncoderMemory : sizes.coder;
        const SWorkPlan plan = PlanWork(m_request.workers, sizes, count, m_image.PieceUnit());
        std::vector<CBlockSlot> slots = AllocateSlots(plan, &m_image);
        if (!m_index.Allocate(count + 1) || slots.empty()) {
            m_operation.Fail(Format("Code 1004-Can't allocate memory %s\n", m_request.imagePath.c_str()));
        }
        Write(m_header.Encode(), 0);
        Write(m_index.Bytes(), 0);
        CBlockPipeline blocks(plan, std::move(slots), m_header.IsZso() ? EStreamForm::Lz4 : EStreamForm::Raw, level);
        CBlockProgress progress(m_operation, m_blockCount, CBlockProgress::EFirst::AfterAHundredth);
        for (std::int64_t number = 0; number < m_blockCount; ++number) {
            progress.ShowIfDue(number);
            m_operation.SetDone(number + 1);
            m_operation.Yield();
            const SBlock& block = blocks.Next();
            FailIfUnread(number, block, blocks);
            if (!WriteBlock(number, block)) {
                return false;
            }
        }
        progress.Show(m_blockCount);
        return SetEntry(m_blockCount, 0);
    }

    void FailIfUnread(std::int64_t number, const SBlock& block, const CBlockPipeline& blocks) {
        if (block.outcome.FailedIn(EStreamStep::Begin)) {
            m_operation.Fail(Format("Code 1005-deflateInit%s\n", block.outcome.message));
        }
        if (block.content.size() - block.padding != m_header.ContentSize(static_cast<std::uint64_t>(number))) {
            m_operation.Fail(Format("Code 1007-block %d : read error\n", static_cast<std::int32_t>(number)),
                             blocks.ImageProblem());
        }
    }

    /// Returns false if the index cannot address the block.
    bool WriteBlock(std::int64_t number, const SBlock& block) {
        const SStreamOutcome& outcome = block.outcome;
        if (outcome.FailedIn(EStreamStep::Work)) {
            m_operation.Fail(Format("Code 1008-block %d:deflate : %s[%d]\n", static_cast<std::int32_t>(number),
                                    outcome.message, outcome.result));
        }
        // A block that does not shrink is stored plain.
        const bool isPlain = block.stored.size() >= block.content.size();
        if (!SetEntry(number, isPlain ? kCsoMarkedBlock : 0)) {
            return false;
        }
        Write(isPlain ? block.content : block.stored, number);
        if (outcome.FailedIn(EStreamStep::End)) {
            m_operation.Fail(Format("Code 1010-deflateEnd : %s\n", outcome.message));
        }
        return true;
    }

    void WriteIndex() {
        if (!m_output.Seek(CsoHeader::kSize)) {
            FailWriting(m_blockCount);
        }
        Write(m_index.Bytes(), m_blockCount);
    }

    /// Sets an index entry to the current position of the output, which is padded to what the shift can express.
    /// Returns false if the entry cannot hold the position.
    bool SetEntry(std::int64_t number, std::uint32_t flags) {
        const std::int64_t rest = m_output.Position() % (std::int64_t{1} << m_header.align);
        if (rest != 0 && !m_output.WriteZeros((std::int64_t{1} << m_header.align) - rest)) {
            FailWriting(number);
        }
        const std::int64_t value = m_output.Position() >> m_header.align;
        m_index.Set(static_cast<std::uint64_t>(number), static_cast<std::uint32_t>(value) | flags);
        return !m_request.strict || value <= m_request.largestCso;
    }

    void Write(std::span<const std::uint8_t> bytes, std::int64_t number) {
        if (!m_output.Write(bytes)) {
            FailWriting(number);
        }
    }

    [[noreturn]] void FailWriting(std::int64_t number) {
        m_operation.Fail(Format("Code 1009-block %d : Write error\n", static_cast<std::int32_t>(number)),
                         m_output.Problem());
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CsoHeader m_header;
    std::int64_t m_blockCount = 0;
    CCheckedInput m_image{m_operation};
    CCheckedOutput m_output{m_operation};
    CNumberTable<std::uint32_t> m_index;
};

}  // namespace

void IsoToCso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Compression ISO2CSO, please Wait");
    CheckPspImage(request, "Code 1001e - Error Opening %s", operation);
    operation.Begin(EConversion::IsoToCso);
    if (request.level) {
        CCsoWriter(request, operation).Run(*request.level);
    }
}

void ImageToCso(const SCompressionRequest& request, COperation& operation) {
    CCsoWriter(request, operation).Run(*request.level);
}

}  // namespace vantrel
