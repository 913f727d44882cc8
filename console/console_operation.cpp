#include "console/console_operation.h"

#include "console/interrupt.h"

namespace vantrel {

void CConsoleOperation::Yield() {
    ThrowIfInterrupted();
}

bool CConsoleOperation::Complete(std::string_view doneText, const std::function<void()>& report) {
    m_doneText = doneText;
    report();
    return true;
}

}  // namespace vantrel
