#include "console/console_operation.h"

#include <algorithm>

#include "console/interrupt.h"

namespace vantrel {

void CConsoleOperation::SetPane(EPane /*pane*/, std::string_view /*text*/) {
    // No place to be interrupted: the last texts are shown when the outputs already have their names.
}

void CConsoleOperation::EnableCommand(ECommand /*command*/, bool /*enabled*/) {}

void CConsoleOperation::AcceptDroppedFiles() {}

std::optional<int> CConsoleOperation::CompressionLevel() {
    return m_level;
}

void CConsoleOperation::StartProgress(std::int32_t range, EProgressFill /*fill*/) {
    m_range = range;
    m_position = 0;
}

void CConsoleOperation::StepProgress() {
    SetProgressPosition(std::min(m_position, m_range - 1) + 1);
}

void CConsoleOperation::SetProgressPosition(std::int32_t position) {
    ThrowIfInterrupted();
    m_position = position;
    m_progress.Update(m_position, m_range);
}

void CConsoleOperation::PumpMessages() {
    ThrowIfInterrupted();
}

void CConsoleOperation::Notify(std::string_view text) {
    m_notice = text;
}

bool CConsoleOperation::Complete(std::string_view doneText, const std::function<void()>& report) {
    m_doneText = doneText;
    report();
    return true;
}

void CConsoleOperation::EndWith(std::string_view text) {
    throw CConversionFailed(std::string(text));
}

}  // namespace vantrel
