// The program's main dialog, read and operated from another process.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "operation/operation.h"

namespace vantrel::test {

/// Controls are named by their ids of resources/resource_ids.h. Texts and paths are UTF-8. Every call on a control that
/// the dialog does not have throws CDriveFailure.
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
    /// The text of the tooltip of a control; nothing when it has none.
    std::optional<std::string> ToolTip(int id) const;

    /// The text of a pane of the status bar at this moment, also in the middle of a conversion.
    std::string Pane(EPane pane) const;

    /// The position and the end of the range of the progress bar; nothing when there is no bar.
    std::optional<int> ProgressPosition() const;
    std::optional<int> ProgressRange() const;
    /// The colour that the screen shows at this per mille of the bar's width, half way down; CLR_INVALID without a bar.
    COLORREF ProgressColour(int perMille) const;

    /// Presses a button and returns at once. A greyed button throws.
    void Press(int id) const;
    /// Presses and waits until the dialog has handled it; not for buttons that open another window or convert.
    void PressAndWait(int id) const;

    /// The entries of a list, the selected one (−1 for none), and the selection of another one as a user does it, with
    /// the notification; the index −1 clears the selection.
    std::vector<std::string> Entries(int id) const;
    int Selection(int id) const;
    void Select(int id, int index) const;
    /// Selects the entry with exactly this text.
    void Select(int id, const std::string& text) const;

    /// Whether the dialog takes dropped files now.
    bool AcceptsDrops() const;
    /// Drops files as another program does. Returns at once; wait for a field or a message box. A dialog that takes no
    /// files, and does not begin to within 5 s, throws: a user could not drop them either.
    void Drop(const std::vector<std::string>& paths) const;

    /// Drops one file and waits until its name (folded to lower case for ASCII) stands in the file-name field.
    void Choose(const std::string& path) const;

    /// Closes the window by its close box.
    void PressCloseBox() const;
    bool IsTopMost() const;
    /// The window with its borders and title, in pixels of the screen.
    RECT ScreenRectangle() const;

private:
    HANDLE m_process;
    HWND m_window;
};

}  // namespace vantrel::test
