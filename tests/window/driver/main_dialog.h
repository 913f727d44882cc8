// Reads and operates the program's main dialog from another process.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "operation/operation.h"

namespace vantrel::test {

/// Controls are named by their ids of resources/resource_ids.h. Texts and paths are UTF-8. Calls for a control that
/// does not exist throw CDriveFailure.
class CDrivenDialog {
public:
    CDrivenDialog(HANDLE process, HWND window) : m_process(process), m_window(window) {}

    HWND Window() const { return m_window; }
    HWND Control(int id) const;
    bool HasControl(int id) const;

    std::string Caption() const;
    std::string Text(int id) const;
    bool IsEnabled(int id) const;
    bool IsVisible(int id) const;
    bool IsChecked(int id) const;
    /// The tooltip of a control; nothing if it has none.
    std::optional<std::string> ToolTip(int id) const;

    /// The current text of a pane of the status bar, also during a conversion.
    std::string Pane(EPane pane) const;

    /// Position and upper end of the range of the progress bar; nothing if there is no bar.
    std::optional<int> ProgressPosition() const;
    std::optional<int> ProgressRange() const;
    /// The colour on the screen at this per mille of the bar's width, at half of its height. CLR_INVALID without a bar.
    COLORREF ProgressColour(int perMille) const;

    /// Presses a button and returns at once. Throws if it is greyed.
    void Press(int id) const;
    /// Presses a button and waits until the dialog has handled it. Not for buttons that open a window or convert.
    void PressAndWait(int id) const;

    /// The entries of a list; the selected index (−1: none); selecting an index (−1: none) with the same notification
    /// as by a user.
    std::vector<std::string> Entries(int id) const;
    int Selection(int id) const;
    void Select(int id, int index) const;
    /// Selects the entry with exactly this text.
    void Select(int id, const std::string& text) const;

    /// Whether the dialog accepts dropped files.
    bool AcceptsDrops() const;
    /// Drops files like another program and returns at once; wait for a field or a message box. Throws if the dialog
    /// does not accept files in time, because a user could not drop them either.
    void Drop(const std::vector<std::string>& paths) const;

    /// Drops a file of a known kind and waits until the dialog has set its name and its buttons.
    void Choose(const std::string& path) const;

    /// Closes the window by its close box.
    void PressCloseBox() const;
    bool IsTopMost() const;
    /// The window with its borders and title, in screen coordinates.
    RECT ScreenRectangle() const;

private:
    HANDLE m_process;
    HWND m_window;
};

}  // namespace vantrel::test
