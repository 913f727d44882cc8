#include "compress/finish.h"

#include "operation/text.h"

namespace vantrel {

void FinishConversion(const SCompressionRequest& request, COutputFile& output, const char* doneText,
                      COperation& operation) {
    const std::int64_t size = output.Size();
    if (!output.Commit()) {
        operation.Fail(output.FailureText());
    }
    operation.SetPane(EPane::File, request.outputPath);
    operation.SetPane(EPane::Percent, "100%");
    operation.SetPane(EPane::Status, doneText);
    operation.Complete(doneText, [&] { operation.SetPane(EPane::Bytes, BytesText(size)); });
}

}  // namespace vantrel
