#include "compress/completion.h"

#include "operation/text.h"

namespace vantrel {

void CheckAndCommit(const SCompressionRequest& request, CCheckedOutput& output) {
    if (request.checkOutput) {
        output.FinishOrFail();
        request.checkOutput(output);
    }
    output.CommitOrFail();
}

bool CompleteConversion(const SCompressionRequest& request, const COutputFile& output, std::int64_t units,
                        const char* windowText, COperation& operation, const std::function<void()>& closeFiles) {
    const char* const doneText = request.doneText != nullptr ? request.doneText : windowText;
    operation.SetDone(units);
    operation.SetPane(EPane::File, request.outputPath);
    operation.SetPane(EPane::Percent, "100%");
    operation.SetPane(EPane::Status, doneText);
    return operation.Complete(doneText, [&] {
        closeFiles();
        operation.SetPane(EPane::Bytes, BytesText(output.Size()));
    });
}

}  // namespace vantrel
