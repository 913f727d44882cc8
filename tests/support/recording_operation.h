// The runner of the tests: keeps every call of a conversion in order, so that a test can assert the exact sequence.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "operation/operation.h"

namespace vantrel::test {

/// What CRecordingOperation throws for a failure; what() is the text.
class CConversionFailed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Calls are kept as lines:
///   pane FILE text | pane BYTES text | pane STATUS text | pane PERCENT text
///   disable 1001 | enable 1 | accept drops | ask level
///   progress 150 fill 189 | step | position 7 | pump
///   notify text | fail text | complete text | completed
class CRecordingOperation : public COperation {
public:
    using COperation::Complete;

    void SetPane(EPane pane, std::string_view text) override;
    void EnableCommand(ECommand command, bool enabled) override;
    void AcceptDroppedFiles() override;
    std::optional<int> CompressionLevel() override;
    void StartProgress(std::int32_t range, EProgressFill fill) override;
    void StepProgress() override;
    void SetProgressPosition(std::int32_t position) override;
    void PumpMessages() override;
    void Notify(std::string_view text) override;
    bool Complete(std::string_view doneText, const std::function<void()>& report) override;

    /// Every call so far, in order.
    const std::vector<std::string>& Calls() const { return m_calls; }
    /// The calls that begin with a word or words, in order: CallsOf("pane PERCENT").
    std::vector<std::string> CallsOf(std::string_view beginning) const;
    /// The text that a pane shows now.
    std::string PaneText(EPane pane) const { return m_panes[static_cast<std::size_t>(pane)]; }

    /// What CompressionLevel answers.
    std::optional<int> m_level = 9;
    /// Whether Complete goes on; false is the list without a selection.
    bool m_completes = true;
    /// Called at every PumpMessages with the number of the call, from 1: a test may look or interfere here.
    std::function<void(int)> m_onPump;

private:
    [[noreturn]] void EndWith(std::string_view text) override;

    std::vector<std::string> m_calls;
    std::string m_panes[4];
    int m_pumps = 0;
};

/// Runs a conversion that is expected to fail, and gives the text with which it failed; "did not fail" otherwise.
std::string FailureOf(const std::function<void()>& conversion);

}  // namespace vantrel::test
