// Compresses an image into a CSO file, block by block.
#include <limits>
#include <utility>

#include "compress/block_pipeline.h"
#include "compress/completion.h"
#include "compress/cso.h"
#include "compress/cso_header.h"
#include "compress/number_table.h"
#include "compress/psp_image.h"
#include "files/checked_file.h"
#include "files/path.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Length of the image in bytes. It is a signed 32-bit number here, so lengths of 2 GiB and more count as unknown.
std::uint64_t ImageLength(const SCompressionRequest& request, COperation& operation) {
    CCheckedInput image(operation);
    image.OpenOrFail(request.imagePath, "Code 10010e - Error Opening %s");
    const std::int64_t length = image.Size();
    if (length < 0 || length > std::numeric_limits<std::int32_t>::max()) {
        operation.Fail(Format("Code 1003-Can't get file siz %s\n", request.imagePath.c_str()), image.Problem());
    }
    return static_cast<std::uint64_t>(length);
}

/// One run of IsoToCso after its checks.
class CCsoWriter {
public:
    CCsoWriter(const SCompressionRequest& request, COperation& operation) : m_request(request), m_operation(operation) {
        m_header.total_bytes = ImageLength(request, operation);
        m_blockCount = static_cast<std::int32_t>(request.strict ? m_header.BlockCount() : m_header.WholeBlockCount());
    }

    void Run(int level) {
        m_image.OpenOrFail(m_request.imagePath, "Code 10010f - Error Opening %s");
        m_output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 10010g - Error create %s");
        m_operation.SetPane(EPane::Bytes, std::to_string(m_blockCount) + " Frames");
        m_operation.SetPane(EPane::File, FileNameOf(m_request.outputPath));
        m_operation.SetTotal(m_blockCount);
        CompressBlocks(level);
        WriteIndex();
        m_image.Close();
        m_output.CommitOrFail();
        CompleteConversion(m_request, m_output, m_blockCount, "Compression iso2cso Done !", m_operation);
    }

private:
    void CompressBlocks(int level) {
        const auto count = static_cast<std::uint64_t>(m_blockCount);
        const SWorkPlan plan = PlanWork(m_request.workers, CsoBlockSizes(m_header.block_size), count);
        std::vector<CBlockSlot> slots = AllocateSlots(plan);
        if (!m_index.Allocate(count + 1) || slots.empty()) {
            m_operation.Fail(Format("Code 1004-Can't allocate memory %s\n", m_request.imagePath.c_str()));
        }
        Write(m_header.Encode(), 0);
        Write(m_index.Bytes(), 0);
        CBlockPipeline blocks(plan, std::move(slots), m_image, EStreamForm::Raw, level);
        CBlockProgress progress(m_operation, m_blockCount, CBlockProgress::EFirst::AfterAHundredth);
        for (std::int32_t number = 0; number < m_blockCount; ++number) {
            progress.ShowIfDue(number);
            m_operation.SetDone(number + 1);
            m_operation.Yield();
            WriteBlock(number, blocks.Next());
        }
        SetEntry(m_blockCount, 0);
        progress.Show(m_blockCount);
    }

    void WriteBlock(std::int32_t number, const SBlock& block) {
        const SStreamOutcome& outcome = block.outcome;
        if (outcome.FailedIn(EStreamStep::Begin)) {
            m_operation.Fail(Format("Code 1005-deflateInit%s\n", outcome.message));
        }
        if (block.content.size() - block.padding != m_header.ContentSize(static_cast<std::uint64_t>(number))) {
            m_operation.Fail(Format("Code 1007-block %d : read error\n", number), m_image.Problem());
        }
        if (outcome.FailedIn(EStreamStep::Work)) {
            m_operation.Fail(Format("Code 1008-block %d:deflate : %s[%d]\n", number, outcome.message, outcome.result));
        }
        // A block that does not shrink is stored plain.
        const bool isPlain = block.stored.size() >= block.content.size();
        SetEntry(number, isPlain ? kCsoPlainBlock : 0);
        Write(isPlain ? block.content : block.stored, number);
        if (outcome.FailedIn(EStreamStep::End)) {
            m_operation.Fail(Format("Code 1010-deflateEnd : %s\n", outcome.message));
        }
    }

    void WriteIndex() {
        if (!m_output.Seek(CsoHeader::kSize)) {
            FailWriting(m_blockCount);
        }
        Write(m_index.Bytes(), m_blockCount);
    }

    /// Sets an index entry to the current position of the output.
    void SetEntry(std::int32_t number, std::uint32_t flags) {
        if (m_request.strict && m_output.Position() > m_request.largestCso) {
            m_operation.Fail(Format("%s: the CSO file would exceed 2 GiB, which its index cannot address\n",
                                    m_request.imagePath.c_str()));
        }
        m_index.Set(static_cast<std::uint64_t>(number), static_cast<std::uint32_t>(m_output.Position()) | flags);
    }

    void Write(std::span<const std::uint8_t> bytes, std::int32_t number) {
        if (!m_output.Write(bytes)) {
            FailWriting(number);
        }
    }

    [[noreturn]] void FailWriting(std::int32_t number) {
        m_operation.Fail(Format("Code 1009-block %d : Write error\n", number), m_output.Problem());
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CsoHeader m_header;
    std::int32_t m_blockCount = 0;
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

}  // namespace vantrel
