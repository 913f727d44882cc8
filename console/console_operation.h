// How the console program runs a conversion: a progress line on the terminal, failures as exceptions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "console/progress_line.h"
#include "operation/operation.h"

namespace vantrel {

class CConsoleOperation : public COperation {
public:
    using COperation::Complete;

    /// `progress` must outlive the operation.
    explicit CConsoleOperation(CProgressLine& progress) : m_progress(progress) {}

    /// The text with which the conversion completed; empty if it has not.
    const std::string& DoneText() const { return m_doneText; }
    /// All notices, in order.
    const std::vector<std::string>& Notices() const { return m_notices; }

    /// What the output lacks of the input; empty if nothing.
    const std::string& Warning() const { return m_warning; }

    void SetTotal(std::int64_t units) override { m_total = units; }
    void SetDone(std::int64_t units) override { m_progress.Update(units, m_total); }
    /// Throws CInterrupted after Ctrl-C.
    void Yield() override;
    void Notify(std::string_view text) override { m_notices.emplace_back(text); }
    void Warn(std::string_view text) override { m_warning = text; }
    bool Complete(std::string_view doneText, const std::function<void()>& report) override;

private:
    CProgressLine& m_progress;
    std::int64_t m_total = 0;
    std::string m_doneText;
    std::vector<std::string> m_notices;
    std::string m_warning;
};

}  // namespace vantrel
