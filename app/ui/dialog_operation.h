// The window as the runner of a conversion: panes, progress bar, buttons, the done message with its sound, and the end
// of the process after a failure.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/ui/message_loop.h"
#include "app/ui/status_bar.h"
#include "app/ui/taskbar_progress.h"
#include "app/ui/timed_progress_ctrl.h"
#include "app/ui/window.h"
#include "operation/operation.h"

namespace vantrel {

/// What a conversion may use of the dialog while it runs.
struct SOperationControls {
    HWND dialog;
    HWND progressAnchor;
    CMessageLoop& loop;
    CStatusBar& statusBar;
    CComboBox& soundList;
    CComboBox& levelList;
    const std::wstring& workFolder;
    std::wstring& scratchText;         ///< Takes the percent text.
    std::wstring& doneMessage;         ///< Takes the done text.
    std::function<void()> updateData;  ///< Brings the controls' values to the dialog's members.
};

class CDialogOperation : public COperation {
public:
    using COperation::Complete;

    explicit CDialogOperation(SOperationControls controls);
    CDialogOperation(const CDialogOperation&) = delete;
    CDialogOperation& operator=(const CDialogOperation&) = delete;
    ~CDialogOperation() override;

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
    /// Shows the text and ends the process with status 0; what has been written stays.
    void EndWith(std::string_view text) override;
    void PaintNow();
    void ShowInformation(std::string_view text);
    void KeepFocusUsable(HWND control, ECommand command, bool enabled);

    SOperationControls m_controls;
    CSleepGuard m_sleepGuard;
    CTaskbarProgress m_taskbar;
    bool m_focusMoved = false;
    bool m_levelListGreyed = false;
    std::unique_ptr<CTimedProgressCtrl> m_progress;
};

}  // namespace vantrel
