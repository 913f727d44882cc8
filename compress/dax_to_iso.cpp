// A DAX file back into an image, frame by frame.
#include "compress/blocks_ahead.h"
#include "compress/dax.h"
#include "compress/dax_reader.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr const char* kDoneText = "Decompression dax2iso Done !";

/// One run of DaxToIso: the container, the output and the texts for all that can be wrong with them.
class CDaxExpansion {
public:
    CDaxExpansion(const SCompressionRequest& request, COperation& operation)
        : m_request(request), m_operation(operation) {}

    void Run() {
        OpenFiles();
        DisableFrameCommands(m_operation);
        Check(m_dax.ReadHeader());
        m_operation.SetPane(EPane::Bytes, std::to_string(m_dax.FrameCount()) + " Frames");
        m_operation.SetPane(EPane::File, m_request.shownName);
        m_operation.StartProgress(ProgressRange(m_dax.FrameCount()), EProgressFill::Dvd);
        Check(m_dax.ReadTables());
        ExpandFrames();
        Finish();
    }

private:
    void OpenFiles() {
        // Each of the two texts names the other file; users know them that way.
        if (!m_dax.Open(m_request.imagePath)) {
            m_operation.Fail(Format("Code 1003- Cannot open input file %s\n", m_request.outputPath.c_str()));
        }
        if (!m_output.Open(m_request.outputPath, m_request.manner, ESharing::Nobody)) {
            m_operation.Fail(Format("Code 1003o-Cannot create output file %s\n", m_request.imagePath.c_str()));
        }
    }

    void ExpandFrames() {
        const std::uint32_t count = m_dax.FrameCount();
        const SSharing sharing = SharingOf(m_request, kDaxFrameSizes);
        auto places = PlacesOf<CInflatedPiece>(sharing, kDaxFrameSizes, count);
        Check(places.empty() ? EDaxFault::Memory : EDaxFault::None);
        CBlocksAhead<CInflatedPiece> frames(sharing, count, std::move(places), m_dax, {EStreamForm::Zlib});
        for (std::uint32_t number = 0; number < count; ++number) {
            const SInflatedBlock& frame = frames.Next();
            Check(CDaxReader::FaultOf(frame));
            if (!m_output.Write(frame.content)) {
                m_operation.Fail("I/O error writing to output file.\n");
            }
            m_operation.SetPane(EPane::Percent, PercentText(PercentOf(number, count)));
            if (m_request.manner != EOutputManner::InPlace) {
                m_operation.StepProgress();  // the window's bar waits for the end; a terminal's line moves on
            }
        }
        m_operation.StepProgress();
        m_operation.PumpMessages();
    }

    void Check(EDaxFault fault) {
        switch (fault) {
            case EDaxFault::None:
                return;
            case EDaxFault::Header:
                m_operation.Fail("Input is not a valid DAX file.\n");
            case EDaxFault::Tables:
                m_operation.Fail("Corrupted input file.\n");
            case EDaxFault::Memory:
                m_operation.Fail("Not enough memory for the frame tables!\n");
            case EDaxFault::Read:
                m_operation.Fail("Input seems to be corrupted.\n");
            case EDaxFault::Inflate:
                m_operation.Fail("Error while decompressing (corrupt input?)\n");
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
            if (!m_output.Finish()) {
                m_operation.Fail("I/O error writing to output file.\n");
            }
            m_dax.Close();
            m_operation.SetPane(EPane::Bytes, BytesText(size));
        });
        if (!completed) {
            m_output.LeaveOpen();
            m_dax.LeaveOpen();
        }
    }

    const SCompressionRequest& m_request;
    COperation& m_operation;
    CDaxReader m_dax;
    COutputFile m_output;
};

}  // namespace

void DaxToIso(const SCompressionRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, "Decompressing DAX2ISO, please Wait");
    CDaxExpansion(request, operation).Run();
}

}  // namespace vantrel
