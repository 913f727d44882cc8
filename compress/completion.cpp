#include "compress/completion.h"

#include "operation/text.h"

namespace vantrel {

bool CompleteConversion(const SCompressionRequest& request, const COutputFile& output, std::int64_t units,
                        const char* doneText, COperation& operation, const std::function<void()>& closeFiles) {
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
