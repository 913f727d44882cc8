#include "app/ui/dialog_operation.h"

#include <shellapi.h>

#include <cstdlib>

#include "app/message_box.h"
#include "app/sound/completion_sound.h"
#include "files/utf.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

CDialogOperation::CDialogOperation(SOperationControls controls)
    : m_controls(std::move(controls)), m_taskbar(m_controls.dialog) {}

CDialogOperation::~CDialogOperation() {
    m_controls.statusBar.PaintNow();
}

void CDialogOperation::SetPane(EPane pane, std::string_view text) {
    std::wstring wide = WideOf(text);
    m_controls.statusBar.SetPaneText(static_cast<int>(pane), wide);
    if (pane == EPane::Percent) {
        m_controls.scratchText = std::move(wide);
    }
}

void CDialogOperation::EnableCommand(ECommand command, bool enabled) {
    const CWindow control(GetDlgItem(m_controls.dialog, static_cast<int>(command)));
    if (!enabled) {
        KeepFocusUsable(control.Handle(), command, enabled);
    }
    control.Enable(enabled);
    if (command == ECommand::CompressionLevel) {
        m_levelListGreyed = !enabled;
    }
    if (enabled) {
        KeepFocusUsable(control.Handle(), command, enabled);
    }
}

/// The keyboard's focus must not stay on a greyed button, where keys go nowhere. It waits in the sound list, where no
/// key does harm, and goes on to the browse button when that is enabled again.
void CDialogOperation::KeepFocusUsable(HWND control, ECommand command, bool enabled) {
    const HWND focus = GetFocus();
    const HWND waiting = m_controls.soundList.Handle();
    const bool leaves = !enabled && focus == control;
    const bool returns = enabled && command == ECommand::Browse && m_focusMoved && focus == waiting;
    if (leaves || returns) {
        m_focusMoved = leaves;
        SendMessageW(m_controls.dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(leaves ? waiting : control), TRUE);
    }
}

void CDialogOperation::AcceptDroppedFiles() {
    DragAcceptFiles(m_controls.dialog, TRUE);
}

std::optional<int> CDialogOperation::CompressionLevel() {
    const int selection = m_controls.levelList.Selection();
    return selection < 0 ? std::nullopt : std::optional<int>(selection + 1);
}

void CDialogOperation::StartProgress(std::int32_t range, EProgressFill fill) {
    m_progress = std::make_unique<CTimedProgressCtrl>(m_controls.progressAnchor, range, static_cast<int>(fill));
    m_controls.statusBar.PaintNow();
}

void CDialogOperation::StepProgress() {
    if (m_progress) {
        m_progress->StepIt(true);
    }
}

void CDialogOperation::SetProgressPosition(std::int32_t position) {
    if (m_progress) {
        m_progress->SetPosition(position, true);
    }
}

void CDialogOperation::PumpMessages() {
    m_controls.statusBar.PaintIfDue();
    if (m_progress) {
        m_progress->PaintIfDue();
        m_taskbar.ShowIfDue(m_progress->Position(), m_progress->Range());
    }
    vantrel::PumpMessages(m_controls.loop);
}

void CDialogOperation::Notify(std::string_view text) {
    ShowInformation(text);
}

void CDialogOperation::EndWith(std::string_view text) {
    ShowInformation(text);
    std::exit(0);
}

bool CDialogOperation::Complete(std::string_view doneText, const std::function<void()>& report) {
    m_controls.updateData();
    // A list may or may not take an index past its end as "select nothing": what counts is the selection read back.
    const CComboBox& soundList = m_controls.soundList;
    soundList.Select(soundList.Count());
    const int selection = soundList.Selection();
    if (selection < 0) {
        return false;
    }
    const std::wstring soundPath = m_controls.workFolder + soundList.EntryText(selection);
    m_controls.doneMessage = WideOf(doneText);
    report();
    PaintNow();
    PlayCompletionSound(m_controls.dialog, soundPath, m_controls.doneMessage);
    AcceptDroppedFiles();
    SetPane(EPane::Percent, PercentText(0));
    using enum ECommand;
    DisableCommands(*this, {IsoToIml, Vantrel, IsoToBin, BinToIso});
    EnableCommand(Browse, true);
    DisableCommands(*this, {CheckPostgap, IsoToDax, DaxToIso, IsoToCso, CsoToIso});
    if (m_levelListGreyed) {  // for the run, not for good: the next image may want another level
        EnableCommand(CompressionLevel, true);
    }
    m_progress.reset();
    return true;
}

void CDialogOperation::PaintNow() {
    m_controls.statusBar.PaintNow();
    if (m_progress) {
        m_progress->PaintNow();
    }
}

void CDialogOperation::ShowInformation(std::string_view text) {
    PaintNow();
    ShowMessage(GetLastActivePopup(m_controls.dialog), WideOf(text));
}

}  // namespace vantrel
