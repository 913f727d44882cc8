#include "app/ui/dialog_operation.h"

#include <shellapi.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "app/message_box.h"
#include "app/sound/completion_sound.h"
#include "files/utf.h"
#include "operation/text.h"
#include "resources/resource_ids.h"

namespace vantrel {
namespace {

/// Units of work as a number of the progress bar, which has 32 bits.
std::int32_t BarUnits(std::int64_t units) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(units, 0, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

CDialogOperation::CDialogOperation(SOperationControls controls)
    : m_controls(std::move(controls)), m_taskbar(m_controls.dialog) {}

CDialogOperation::~CDialogOperation() {
    m_controls.statusBar.PaintNow();
}

void CDialogOperation::Begin(EConversion conversion) {
    m_rules = &RulesOf(conversion);
    for (const int controlId : m_rules->greyed) {
        EnableControl(controlId, false);
    }
    if (m_rules->levelList == ELevelList::GreyedAtBegin && m_controls.levelList.Selection() >= 0) {
        EnableControl(IDC_COMPRESSION, false);
    }
}

void CDialogOperation::SetPane(EPane pane, std::string_view text) {
    std::wstring wide = WideOf(text);
    m_controls.statusBar.SetPaneText(static_cast<int>(pane), wide);
    if (pane == EPane::Percent) {
        m_controls.scratchText = std::move(wide);
    }
}

void CDialogOperation::SetTotal(std::int64_t units) {
    if (m_rules->levelList == ELevelList::GreyedWithBar) {
        EnableControl(IDC_COMPRESSION, false);
    }
    m_progress = std::make_unique<CTimedProgressCtrl>(m_controls.progressAnchor, BarUnits(units), m_rules->fillBitmap);
    m_controls.statusBar.PaintNow();
}

void CDialogOperation::SetDone(std::int64_t units) {
    if (m_progress) {
        m_progress->SetPosition(BarUnits(units), true);
    }
}

void CDialogOperation::Yield() {
    m_controls.statusBar.PaintIfDue();
    if (m_progress) {
        m_progress->PaintIfDue();
        m_taskbar.ShowIfDue(m_progress->Position(), m_progress->Range());
    }
    PumpMessages(m_controls.loop);
}

void CDialogOperation::Notify(std::string_view text) {
    ShowInformation(text);
}

void CDialogOperation::EndWith(std::string_view text, std::string_view /*cause*/) {
    ShowInformation(text);
    std::exit(0);
}

bool CDialogOperation::Complete(std::string_view doneText, const std::function<void()>& report) {
    m_controls.updateData();
    // Whether an index past the end clears the selection is up to the list. Only the selection that is read back
    // counts.
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
    DragAcceptFiles(m_controls.dialog, TRUE);
    SetPane(EPane::Percent, PercentText(0));
    SetStates(CompletionStates());
    m_progress.reset();
    return true;
}

void CDialogOperation::End() {
    Apply(m_rules->ending);
}

void CDialogOperation::EndCancelled() {
    Apply(CancelEnding());
}

void CDialogOperation::Apply(const SEnding& ending) {
    SetStates(ending.states);
    if (ending.acceptsDrops) {
        DragAcceptFiles(m_controls.dialog, TRUE);
    }
}

void CDialogOperation::SetStates(std::span<const SControlState> states) {
    for (const SControlState& state : states) {
        EnableControl(state.controlId, state.enabled);
    }
}

/// A greyed control must not keep the keyboard focus, because it ignores all keys. The focus moves to "Always On Top",
/// where keys do no harm, and on to the browse button once that is enabled again.
void CDialogOperation::EnableControl(int controlId, bool enabled) {
    const CWindow control(GetDlgItem(m_controls.dialog, controlId));
    if (!enabled) {
        MoveFocusFrom(control.Handle());
    }
    control.Enable(enabled);
    if (enabled && controlId == IDC_BROWSE) {
        ReturnFocusTo(control.Handle());
    }
}

void CDialogOperation::MoveFocusFrom(HWND control) {
    if (GetFocus() == control) {
        m_focusMoved = true;
        SendMessageW(m_controls.dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(WaitingControl()), TRUE);
    }
}

void CDialogOperation::ReturnFocusTo(HWND control) {
    if (m_focusMoved && GetFocus() == WaitingControl()) {
        m_focusMoved = false;
        SendMessageW(m_controls.dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
    }
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
