// The console program's way to run a conversion: progress on a terminal, failures as an exception, nothing to grey.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "console/progress_line.h"
#include "operation/operation.h"

namespace vantrel {

/// A conversion that failed; what() is the conversion's own text.
class CConversionFailed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class CConsoleOperation : public COperation {
public:
    using COperation::Complete;

    /// `level` is what CompressionLevel answers; `progress` outlives the operation.
    CConsoleOperation(std::optional<int> level, CProgressLine& progress) : m_level(level), m_progress(progress) {}

    /// The text with which the conversion completed; empty when it did not come to that.
    const std::string& DoneText() const { return m_doneText; }
    /// The last notice; empty when there was none.
    const std::string& Notice() const { return m_notice; }

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

private:
    [[noreturn]] void EndWith(std::string_view text) override;

    std::optional<int> m_level;
    CProgressLine& m_progress;
    std::int32_t m_range = 0;
    std::int32_t m_position = 0;
    std::string m_doneText;
    std::string m_notice;
};

}  // namespace vantrel
