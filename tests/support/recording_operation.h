// The runner of the tests: records every call of a conversion in order, so that a test can assert the exact sequence.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "operation/operation.h"

namespace vantrel::test {

/// Records each call as a line:
///   begin iso2iml
///   pane FILE text | pane BYTES text | pane STATUS text | pane PERCENT text
///   total 150 | done 7 | yield
///   notify text | fail text | complete text | completed
class CRecordingOperation : public COperation {
public:
    using COperation::Complete;

    void Begin(EConversion conversion) override;
    void SetPane(EPane pane, std::string_view text) override;
    void SetTotal(std::int64_t units) override;
    void SetDone(std::int64_t units) override;
    void Yield() override;
    void Notify(std::string_view text) override;
    bool Complete(std::string_view doneText, const std::function<void()>& report) override;

    /// Every call so far, in order.
    const std::vector<std::string>& Calls() const { return m_calls; }
    /// The calls that begin with a text, in order, for example CallsOf("pane PERCENT").
    std::vector<std::string> CallsOf(std::string_view beginning) const;
    /// The current text of a pane.
    std::string PaneText(EPane pane) const { return m_panes[static_cast<std::size_t>(pane)]; }

    /// Whether Complete continues; false stands for a sound list without a selection.
    bool m_completes = true;
    /// Called at every Yield with its number, starting at 1, so that a test can check or change things.
    std::function<void(int)> m_onYield;

private:
    void EndWith(std::string_view text, std::string_view cause) override;

    std::vector<std::string> m_calls;
    std::string m_panes[4];
    int m_yields = 0;
};

/// The line for a call of Begin, for example "begin iso2iml".
std::string BeginOf(EConversion conversion);

/// Runs a conversion that is expected to fail, and returns the text of the failure; "did not fail" if it succeeds.
std::string FailureOf(const std::function<void()>& conversion);

}  // namespace vantrel::test
