#include "tests/window/driver/boxes.h"

#include <dlgs.h>

#include "tests/window/driver/tested_program.h"
#include "tests/window/driver/window_query.h"

namespace vantrel::test {
namespace {

/// The control that holds the text of a message box.
constexpr int kBoxText = 0xFFFF;

bool IsFileDialog(HWND window) {
    return GetDlgItem(window, cmb13) != nullptr || GetDlgItem(window, edt1) != nullptr;
}

bool IsBox(HWND window) {
    return GetDlgItem(window, kBoxText) != nullptr && !IsFileDialog(window);
}

/// Waits for a window of the program. Throws if the program ends.
HWND WaitForWindow(const CTestedProgram& program, const std::string& what, bool (*condition)(HWND),
                   Milliseconds deadline) {
    HWND window = nullptr;
    Require(
        what,
        [&] {
            window = FindWindowOf(program.ProcessId(), condition);
            return window != nullptr || !program.IsRunning();
        },
        deadline);
    if (window == nullptr) {
        throw CDriveFailure("the program ended without " + what);
    }
    return window;
}

}  // namespace

std::string CDrivenBox::Text() const {
    return TextOf(GetDlgItem(m_window, kBoxText));
}
std::string CDrivenBox::Caption() const {
    return TextOf(m_window);
}

bool CDrivenBox::HasIcon() const {
    for (const HWND child : ChildrenOf(m_window)) {
        if ((GetWindowLongPtrW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON && Ask(child, STM_GETICON) != 0) {
            return true;
        }
    }
    return false;
}

void CDrivenBox::Answer(int button) const {
    const HWND control = GetDlgItem(m_window, button);
    if (control == nullptr) {
        throw CDriveFailure("the message box has no button " + std::to_string(button));
    }
    PressButton(control);
    Require("end of the message box", [this] { return !IsOpen(); });
}

CDrivenBox WaitForBox(const CTestedProgram& program, Milliseconds deadline) {
    return CDrivenBox(WaitForWindow(program, "message box", IsBox, deadline));
}

bool HasBox(const CTestedProgram& program) {
    return FindWindowOf(program.ProcessId(), IsBox) != nullptr;
}

std::string CDrivenFileDialog::Caption() const {
    return TextOf(m_window);
}

HWND CDrivenFileDialog::NameField() const {
    const HWND combo = GetDlgItem(m_window, cmb13);
    return combo != nullptr ? combo : GetDlgItem(m_window, edt1);
}

std::string CDrivenFileDialog::FileNameText() const {
    return TextOf(NameField());
}

void CDrivenFileDialog::Choose(const std::string& path) const {
    const std::size_t windowsBefore = WindowsOf(m_program->ProcessId()).size();
    constexpr Milliseconds kPatience{2'000};
    const auto choose = [&] {
        SetTextOf(NameField(), path);
        if (FileNameText() != path) {
            return false;
        }
        PressButton(GetDlgItem(m_window, IDOK));
        return WaitUntil([&] { return !IsOpen() || WindowsOf(m_program->ProcessId()).size() > windowsBefore; },
                         kPatience);
    };
    // A new dialog sets its own text once more, so the name is entered until it remains. On a busy machine, the dialog
    // may close because of one try during the next one.
    Require("answer of the file dialog", [&] {
        try {
            return !IsOpen() || choose();
        } catch (const CDriveFailure&) {
            if (IsOpen()) {
                throw;
            }
            return true;
        }
    });
}

void CDrivenFileDialog::Cancel() const {
    PressButton(GetDlgItem(m_window, IDCANCEL));
    Require("end of the file dialog", [this] { return !IsOpen(); });
}

CDrivenFileDialog WaitForFileDialog(const CTestedProgram& program, Milliseconds deadline) {
    const HWND window = WaitForWindow(program, "file dialog", IsFileDialog, deadline);
    Require("OK button of the file dialog", [window] {
        const HWND button = GetDlgItem(window, IDOK);
        return button != nullptr && IsWindowVisible(button) != FALSE && IsWindowEnabled(button) != FALSE;
    });
    return {program, window};
}

}  // namespace vantrel::test
