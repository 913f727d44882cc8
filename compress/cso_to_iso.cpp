// Expands a CSO file into an image, block by block.
#include <utility>

#include "compress/block_pipeline.h"
#include "compress/completion.h"
#include "compress/cso.h"
#include "compress/cso_reader.h"
#include "files/checked_file.h"
#include "files/path.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// One run of CsoToIso.
class CCsoExpansion {
public:
    CCsoExpansion(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation), m_cso(request.strict) {}

    void Run() {
        OpenFiles();
        Check(m_cso.ReadHeader());
        const auto count = static_cast<std::int64_t>(m_cso.BlockCount());
        m_operation.SetPane(EPane::Bytes, std::to_string(count) + " Blocks");
        m_operation.SetPane(EPane::File, FileNameOf(m_request.outputPath));
        m_operation.SetTotal(count);
        m_operation.Yield();
        Check(m_cso.ReadIndex());
        FailIfIncomplete();
        m_operation.Yield();
        ExpandBlocks(count);
        m_output.CommitOrFail();
        CompleteConversion(m_request, m_output, count, "ciso decompress cso2iso Done !", m_operation);
    }

private:
    void OpenFiles() {
        // The first handle only tests whether the file exists; its text deliberately names the output.
        m_existence.OpenOrFail(m_request.chosenPath, "Code 11010e - Error Opening %s", m_request.outputPath);
        if (!m_cso.Open(m_request.chosenPath)) {
            const std::string cause = OpeningProblem(m_request.chosenPath);
            m_operation.Fail(Format("Code 11010f - Error Opening %s", m_request.chosenPath.c_str()), cause);
        }
        m_output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 11010g - Error create %s");
    }

    void FailIfIncomplete() {
        if (m_cso.MissingBytes() != 0) {
            m_operation.Fail(Format("%s: the last %llu bytes of the image are not stored\n",
                                    m_request.chosenPath.c_str(),
                                    static_cast<unsigned long long>(m_cso.MissingBytes())));
        }
    }

    void ExpandBlocks(std::int64_t count) {
        const SWorkPlan plan = PlanWork(m_request.workers, m_cso.BlockSizes(), m_cso.BlockCount());
        std::vector<CBlockSlot> slots = AllocateSlots(plan);
        Check(slots.empty() ? ECsoFault::Memory : ECsoFault::None);
        CBlockPipeline blocks(plan, std::move(slots), m_cso, EStreamForm::Raw);
        CBlockProgress progress(m_operation, count, CBlockProgress::EFirst::AtBlock0);
        for (std::int64_t number = 0; number < count; ++number) {
            m_operation.Yield();
            progress.ShowIfDue(number);
            m_operation.SetDone(number + 1);
            WriteBlock(static_cast<std::int32_t>(number), blocks.Next());
        }
        progress.Show(count);
        m_operation.Yield();
    }

    void WriteBlock(std::int32_t number, const SBlock& block) {
        const auto index = static_cast<std::uint64_t>(number);
        Check(m_cso.FaultOf(index, block), number, block);
        if (!m_output.Write(m_cso.ContentOf(index, block))) {
            m_operation.Fail(Format("Code 1110-block %d : Write error\n", number), m_output.Problem());
        }
    }

    void Check(ECsoFault fault, std::int32_t number = 0, const SBlock& block = {}) {
        if (fault != ECsoFault::None) {
            m_operation.Fail(FailureTextOf(fault, number, block), CauseOf(fault));
        }
    }

    std::string CauseOf(ECsoFault fault) const {
        if (!m_cso.Problem().empty()) {
            return m_cso.Problem();
        }
        return fault == ECsoFault::ShortHeader ? m_request.chosenPath + ": the file is shorter than a CSO header"
               : fault == ECsoFault::Index     ? m_cso.Refusal()
                                               : std::string();
    }

    /// Header faults deliberately name the output.
    std::string FailureTextOf(ECsoFault fault, std::int32_t number, const SBlock& block) const {
        const char* const input = m_request.chosenPath.c_str();
        const char* const output = m_request.outputPath.c_str();
        const char* const message = block.outcome.message;
        switch (fault) {
            case ECsoFault::None:
                break;
            case ECsoFault::ShortHeader:
                return Format("Code 11010e - Error Opening %s", output);
            case ECsoFault::Format:
                return Format("Code 11011 - ciso file format error %s", output);
            case ECsoFault::Unsupported:
                return m_cso.Refusal() + "\n";
            case ECsoFault::Memory:
                return Format("Code 1104-Can't allocate memory %s\n", input);
            case ECsoFault::Index:
                return Format("Code 1105-file read error %s\n", input);
            case ECsoFault::Read:
                return Format("Code 1107-block %d : read error\n", number);
            case ECsoFault::InflateBegin:
                return Format("Code 1106-deflateInit%s\n", message);
            case ECsoFault::Inflate:
                return Format("Code 1108-inflate : %s\n", message);
            case ECsoFault::WrongBlockSize:
                return Format(
                    "Code 1109-block %d : block size error %d != %d\n", number,
                    static_cast<std::int32_t>(block.content.size()),
                    static_cast<std::int32_t>(m_cso.Header().ContentSize(static_cast<std::uint64_t>(number))));
            case ECsoFault::InflateEnd:
                return Format("Code 1111-inflateEnd: %s\n", message);
        }
        return {};
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CCheckedInput m_existence{m_operation};
    CCsoReader m_cso;
    CCheckedOutput m_output{m_operation};
};

}  // namespace

void CsoToIso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "DeCompression CSO2ISO, please Wait");
    operation.Begin(EConversion::CsoToIso);
    if (request.level) {
        CCsoExpansion(request, operation).Run();
    }
}

}  // namespace vantrel
