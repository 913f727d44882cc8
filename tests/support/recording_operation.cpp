#include "tests/support/recording_operation.h"

#include <algorithm>
#include <iterator>

namespace vantrel::test {

namespace {

constexpr const char* kPaneNames[] = {"FILE", "BYTES", "STATUS", "PERCENT"};

}  // namespace

void CRecordingOperation::SetPane(EPane pane, std::string_view text) {
    const auto index = static_cast<std::size_t>(pane);
    m_panes[index] = text;
    m_calls.push_back("pane " + std::string(kPaneNames[index]) + " " + std::string(text));
}

void CRecordingOperation::EnableCommand(ECommand command, bool enabled) {
    m_calls.push_back((enabled ? "enable " : "disable ") + std::to_string(static_cast<std::int32_t>(command)));
}

void CRecordingOperation::AcceptDroppedFiles() {
    m_calls.emplace_back("accept drops");
}

std::optional<int> CRecordingOperation::CompressionLevel() {
    m_calls.emplace_back("ask level");
    return m_level;
}

void CRecordingOperation::StartProgress(std::int32_t range, EProgressFill fill) {
    m_calls.push_back("progress " + std::to_string(range) + " fill " + std::to_string(static_cast<std::int32_t>(fill)));
}

void CRecordingOperation::StepProgress() {
    m_calls.emplace_back("step");
}

void CRecordingOperation::SetProgressPosition(std::int32_t position) {
    m_calls.push_back("position " + std::to_string(position));
}

void CRecordingOperation::PumpMessages() {
    m_calls.emplace_back("pump");
    ++m_pumps;
    if (m_onPump) {
        m_onPump(m_pumps);
    }
}

void CRecordingOperation::Notify(std::string_view text) {
    m_calls.push_back("notify " + std::string(text));
}

void CRecordingOperation::EndWith(std::string_view text) {
    m_calls.push_back("fail " + std::string(text));
    throw CConversionFailed(std::string(text));
}

bool CRecordingOperation::Complete(std::string_view doneText, const std::function<void()>& report) {
    m_calls.push_back("complete " + std::string(doneText));
    if (m_completes) {
        report();
        m_calls.emplace_back("completed");
    }
    return m_completes;
}

std::vector<std::string> CRecordingOperation::CallsOf(std::string_view beginning) const {
    std::vector<std::string> calls;
    std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(calls),
                 [beginning](const std::string& call) { return call.starts_with(beginning); });
    return calls;
}

std::string FailureOf(const std::function<void()>& conversion) {
    try {
        conversion();
    } catch (const CConversionFailed& failure) {
        return failure.what();
    }
    return "did not fail";
}

}  // namespace vantrel::test
