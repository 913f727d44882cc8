// Expands a DAX file into an image, frame by frame.
#include <algorithm>
#include <utility>

#include "compress/block_pipeline.h"
#include "compress/completion.h"
#include "compress/dax.h"
#include "compress/dax_reader.h"
#include "files/checked_file.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// One run of DaxToIso.
class CDaxExpansion {
public:
    CDaxExpansion(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation), m_dax(request.strict) {}

    void Run() {
        OpenFiles();
        m_operation.Begin(EConversion::DaxToIso);
        Check(m_dax.ReadHeader());
        m_operation.SetPane(EPane::Bytes, std::to_string(m_dax.FrameCount()) + " Frames");
        m_operation.SetPane(EPane::File, m_request.shownName);
        m_operation.SetTotal(m_dax.FrameCount());
        Check(m_dax.ReadTables());
        ExpandFrames(m_dax.FrameCount());
        Finish();
    }

private:
    void OpenFiles() {
        // Each text deliberately names the other file.
        if (!m_dax.Open(m_request.imagePath)) {
            const std::string cause = OpeningProblem(m_request.imagePath);
            m_operation.Fail(Format("Code 1003- Cannot open input file %s\n", m_request.outputPath.c_str()), cause);
        }
        m_output.OpenOrFail(m_request.outputPath, m_request.manner, "Code 1003o-Cannot create output file %s\n",
                            m_request.imagePath, ESharing::Nobody);
    }

    /// The window counts one unit and yields once, after all frames; a strict run does so after every frame.
    void ExpandFrames(std::uint32_t count) {
        const SWorkPlan plan = PlanWork(m_request.workers, kDaxFrameSizes, count);
        std::vector<CBlockSlot> slots = AllocateSlots(plan);
        Check(slots.empty() ? EDaxFault::Memory : EDaxFault::None);
        CBlockPipeline frames(plan, std::move(slots), m_dax, EStreamForm::Zlib);
        for (std::uint32_t number = 0; number < count; ++number) {
            WriteFrame(number, frames.Next());
            ShowPercent(m_operation, number, count);
            if (m_request.strict) {
                m_operation.SetDone(number + 1);
                m_operation.Yield();
            }
        }
        if (!m_request.strict) {
            m_operation.SetDone(std::min(1U, count));
            m_operation.Yield();
        }
    }

    void WriteFrame(std::uint32_t number, const SBlock& frame) {
        Check(m_dax.FaultOf(number, frame), number, frame.content.size());
        if (!m_output.Write(m_dax.ContentOf(number, frame))) {
            FailWriting();
        }
    }

    void Check(EDaxFault fault, std::uint32_t frame = 0, std::size_t size = 0) {
        switch (fault) {
            case EDaxFault::None:
                return;
            case EDaxFault::Header:
                m_operation.Fail("Input is not a valid DAX file.\n", m_dax.Problem());
            case EDaxFault::Unsupported:
                m_operation.Fail(m_dax.Refusal() + "\n");
            case EDaxFault::Tables:
                m_operation.Fail("Corrupted input file.\n",
                                 m_dax.Problem().empty() ? m_dax.Refusal() : m_dax.Problem());
            case EDaxFault::Memory:
                m_operation.Fail("Not enough memory for the frame tables!\n");
            case EDaxFault::Read:
                m_operation.Fail("Input seems to be corrupted.\n", m_dax.Problem());
            case EDaxFault::Inflate:
                m_operation.Fail("Error while decompressing (corrupt input?)\n");
            case EDaxFault::Short:
                m_operation.Fail(Format("%s: frame %u has %zu bytes instead of %zu\n", m_request.imagePath.c_str(),
                                        frame, size, m_dax.Header().ContentSize(frame)));
        }
    }

    [[noreturn]] void FailWriting() { m_operation.Fail("I/O error writing to output file.\n", m_output.Problem()); }

    /// The window closes both files within the completion, and leaves them open if it leaves the completion early.
    void Finish() {
        if (m_request.strict) {
            m_output.CommitOrFail();
        }
        const bool completed =
            CompleteConversion(m_request, m_output, m_dax.FrameCount(), "Decompression dax2iso Done !", m_operation,
                               [this] { CloseFiles(); });
        if (!completed) {
            m_output.LeaveOpen();
            m_dax.LeaveOpen();
        }
    }

    void CloseFiles() {
        if (!m_output.Commit()) {
            FailWriting();
        }
        m_dax.Close();
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CDaxReader m_dax;
    CCheckedOutput m_output{m_operation};
};

}  // namespace

void DaxToIso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Decompressing DAX2ISO, please Wait");
    CDaxExpansion(request, operation).Run();
}

}  // namespace vantrel
