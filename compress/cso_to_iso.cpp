// A CSO file back into an image, block by block.
#include "compress/block_report.h"
#include "compress/blocks_ahead.h"
#include "compress/cso.h"
#include "compress/cso_reader.h"
#include "compress/finish.h"
#include "files/path.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// One run of CsoToIso: the container, the output and the texts for all that can be wrong with them.
class CCsoExpansion {
public:
    CCsoExpansion(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation) {}

    void Run() {
        OpenFiles();
        Check(m_cso.ReadHeader());
        m_operation.SetPane(EPane::Bytes, std::to_string(m_cso.BlockCount()) + " Blocks");
        m_operation.SetPane(EPane::File, FileNameOf(m_request.outputPath));
        m_operation.StartProgress(ProgressRange(static_cast<std::int64_t>(m_cso.BlockCount())), EProgressFill::Dvd);
        m_operation.PumpMessages();
        Check(m_cso.ReadIndex());
        m_operation.PumpMessages();
        ExpandBlocks();
        FinishConversion(m_request, m_output, "ciso decompress cso2iso Done !", m_operation);
    }

private:
    void OpenFiles() {
        // The first handle only proves that the file is there; what it reports names the output.
        if (!m_existence.Open(m_request.chosenPath)) {
            m_operation.Fail(Format("Code 11010e - Error Opening %s", m_request.outputPath.c_str()));
        }
        if (!m_cso.Open(m_request.chosenPath)) {
            m_operation.Fail(Format("Code 11010f - Error Opening %s", m_request.chosenPath.c_str()));
        }
        if (!m_output.Open(m_request.outputPath, m_request.manner)) {
            m_operation.Fail(Format("Code 11010g - Error create %s", m_request.outputPath.c_str()));
        }
    }

    void ExpandBlocks() {
        const auto count = static_cast<std::int64_t>(m_cso.BlockCount());
        const SSharing sharing = SharingOf(m_request, m_cso.BlockSizes());
        auto places = PlacesOf<CInflatedPiece>(sharing, m_cso.BlockSizes(), m_cso.BlockCount());
        Check(places.empty() ? ECsoFault::Memory : ECsoFault::None);
        CBlocksAhead<CInflatedPiece> blocks(sharing, m_cso.BlockCount(), std::move(places), m_cso, {EStreamForm::Raw});
        CBlockReport report(m_operation, count, true);
        for (std::int64_t block = 0; block < count; ++block) {
            m_operation.PumpMessages();
            if (report.ShowWhenDue(block)) {
                m_operation.PumpMessages();
            }
            m_operation.StepProgress();
            WriteBlock(static_cast<std::int32_t>(block), blocks.Next());
        }
        report.Show(count);
        m_operation.PumpMessages();
    }

    void WriteBlock(std::int32_t number, const SInflatedBlock& block) {
        Check(m_cso.FaultOf(block), number, block);
        if (!m_output.Write(block.content)) {
            m_operation.Fail(Format("Code 1110-block %d : Write error\n", number));
        }
    }

    /// Goes on when there is no fault, and ends the conversion with the fault's text otherwise. Texts before the first
    /// block name the output where the output was chosen for them.
    void Check(ECsoFault fault, std::int32_t number = 0, const SInflatedBlock& block = {}) {
        if (fault != ECsoFault::None) {
            m_operation.Fail(TextOf(fault, number, block));
        }
    }

    std::string TextOf(ECsoFault fault, std::int32_t number, const SInflatedBlock& block) const {
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
                return Format("Code 1109-block %d : block size error %d != %d\n", number,
                              static_cast<std::int32_t>(block.content.size()),
                              static_cast<std::int32_t>(m_cso.Header().block_size));
            case ECsoFault::InflateEnd:
                return Format("Code 1111-inflateEnd: %s\n", message);
        }
        return {};
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CInputFile m_existence;
    CCsoReader m_cso;
    COutputFile m_output;
};

}  // namespace

void CsoToIso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "DeCompression CSO2ISO, please Wait");
    DisableFrameCommands(operation);
    if (!operation.CompressionLevel()) {
        return;
    }
    operation.EnableCommand(ECommand::CompressionLevel, false);
    CCsoExpansion(request, operation).Run();
}

}  // namespace vantrel
