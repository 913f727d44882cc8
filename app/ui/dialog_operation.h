// The window as the runner of a conversion: panes, progress bar, buttons, the done message with its sound, and the end
// of the process after a failure.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>

#include "app/conversion_rules.h"
#include "app/ui/message_loop.h"
#include "app/ui/status_bar.h"
#include "app/ui/taskbar_progress.h"
#include "app/ui/timed_progress_ctrl.h"
#include "app/ui/window.h"
#include "operation/operation.h"
#include "resources/resource_ids.h"

#undef Yield  // an empty macro of windows.h, which may come after operation.h

namespace vantrel {

/// The parts of the dialog that a conversion uses while it runs.
struct SOperationControls {
    HWND dialog;
    HWND progressAnchor;
    CMessageLoop& loop;
    CStatusBar& statusBar;
    CComboBox& soundList;
    CComboBox& levelList;
    const std::wstring& workFolder;
    std::wstring& scratchText;         ///< Receives the percent text.
    std::wstring& doneMessage;         ///< Receives the done text.
    std::function<void()> updateData;  ///< Copies the values of the controls to the dialog's members.
};

/// Begin must be the first call that concerns buttons or progress.
class CDialogOperation : public COperation {
public:
    using COperation::Complete;

    explicit CDialogOperation(SOperationControls controls);
    CDialogOperation(const CDialogOperation&) = delete;
    CDialogOperation& operator=(const CDialogOperation&) = delete;
    ~CDialogOperation() override;

    void Begin(EConversion conversion) override;
    void SetPane(EPane pane, std::string_view text) override;
    void SetTotal(std::int64_t units) override;
    void SetDone(std::int64_t units) override;
    void Yield() override;
    void Notify(std::string_view text) override;
    bool Complete(std::string_view doneText, const std::function<void()>& report) override;

    /// Applies the ending of the conversion. To be called after the engine's function has returned.
    void End();
    /// The same for a conversion that the user has cancelled.
    void EndCancelled();

private:
    /// Shows the text and ends the process with status 0. Partly written outputs stay.
    void EndWith(std::string_view text, std::string_view cause) override;
    void Apply(const SEnding& ending);
    void SetStates(std::span<const SControlState> states);
    void EnableControl(int controlId, bool enabled);
    /// Has the keyboard focus while everything else is greyed.
    HWND WaitingControl() const { return GetDlgItem(m_controls.dialog, IDC_ALWAYS_ON_TOP); }
    void MoveFocusFrom(HWND control);
    void ReturnFocusTo(HWND control);
    void PaintNow();
    void ShowInformation(std::string_view text);

    SOperationControls m_controls;
    CSleepGuard m_sleepGuard;
    CTaskbarProgress m_taskbar;
    const SConversionRules* m_rules = nullptr;
    bool m_focusMoved = false;
    std::unique_ptr<CTimedProgressCtrl> m_progress;
};

}  // namespace vantrel
