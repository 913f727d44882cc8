// Message boxes and file dialogs of the driven program.
#pragma once

#include <windows.h>

#include <string>

#include "tests/window/driver/poll.h"

namespace vantrel::test {

class CTestedProgram;

/// An open message box.
class CDrivenBox {
public:
    explicit CDrivenBox(HWND window) : m_window(window) {}

    HWND Window() const { return m_window; }
    std::string Text() const;
    std::string Caption() const;
    /// Whether it shows an icon.
    bool HasIcon() const;
    bool IsOpen() const { return IsWindow(m_window) != FALSE; }
    /// Presses OK and waits until the box is gone.
    void Close() const { Answer(IDOK); }
    /// Presses one of its buttons (IDOK, IDYES, IDNO, IDCANCEL) and waits until the box is gone.
    void Answer(int button) const;

private:
    HWND m_window;
};

/// Waits until the program shows a message box. Throws if the program ends instead.
CDrivenBox WaitForBox(const CTestedProgram& program, Milliseconds deadline = kSoon);
/// Whether a message box of the program is open.
bool HasBox(const CTestedProgram& program);

/// An open dialog for choosing a file or folder.
class CDrivenFileDialog {
public:
    CDrivenFileDialog(const CTestedProgram& program, HWND window) : m_program(&program), m_window(window) {}

    HWND Window() const { return m_window; }
    std::string Caption() const;
    bool IsOpen() const { return IsWindow(m_window) != FALSE; }
    /// Enters a name or path and presses the OK button. Returns when the dialog has closed or the program has opened
    /// another window over it, such as an overwrite prompt.
    void Choose(const std::string& path) const;
    /// Presses Cancel and waits until the dialog is gone.
    void Cancel() const;
    /// The text of the name field.
    std::string FileNameText() const;

private:
    HWND NameField() const;

    const CTestedProgram* m_program;
    HWND m_window;
};

/// Waits until the program shows a file dialog and it is ready for input.
CDrivenFileDialog WaitForFileDialog(const CTestedProgram& program, Milliseconds deadline = kSoon);

}  // namespace vantrel::test
