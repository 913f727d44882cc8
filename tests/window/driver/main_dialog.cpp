#include "tests/window/driver/main_dialog.h"

#include <commctrl.h>
#include <shlobj.h>

#include <cctype>

#include "files/path.h"
#include "files/utf.h"
#include "resources/resource_ids.h"
#include "tests/window/driver/poll.h"
#include "tests/window/driver/remote_memory.h"
#include "tests/window/driver/window_query.h"

namespace vantrel::test {
namespace {

HWND ChildOfClass(HWND window, const wchar_t* className) {
    for (const HWND child : ChildrenOf(window)) {
        if (lstrcmpiW(ClassOf(child).c_str(), className) == 0) {
            return child;
        }
    }
    return nullptr;
}

/// The class of the program's progress bar, which answers the messages of native ones.
constexpr wchar_t kProgressClass[] = L"VantrelTimedProgress";

std::optional<int> AskProgressBar(HWND window, UINT message) {
    const HWND bar = ChildOfClass(window, kProgressClass);
    return bar == nullptr ? std::nullopt : std::optional<int>(static_cast<int>(Ask(bar, message)));
}

/// The DROPFILES block of these paths: the header, every path with its closing zero, and another zero.
std::vector<char> DropBlock(const std::vector<std::string>& paths) {
    std::wstring names;
    for (const std::string& path : paths) {
        names += WideOf(path);
        names += L'\0';
    }
    names += L'\0';
    DROPFILES header{};
    header.pFiles = sizeof header;
    header.fWide = TRUE;
    const char* headerBytes = reinterpret_cast<const char*>(&header);
    const char* nameBytes = reinterpret_cast<const char*>(names.data());
    std::vector<char> block(headerBytes, headerBytes + sizeof header);
    block.insert(block.end(), nameBytes, nameBytes + names.size() * sizeof(wchar_t));
    return block;
}

std::string Folded(std::string text) {
    for (char& character : text) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    return text;
}

}  // namespace

HWND CDrivenDialog::Control(int id) const {
    const HWND control = GetDlgItem(m_window, id);
    if (control == nullptr) {
        throw CDriveFailure("the dialog has no control " + std::to_string(id));
    }
    return control;
}

bool CDrivenDialog::HasControl(int id) const {
    return GetDlgItem(m_window, id) != nullptr;
}
std::string CDrivenDialog::Caption() const {
    return TextOf(m_window);
}
std::string CDrivenDialog::Text(int id) const {
    return TextOf(Control(id));
}
bool CDrivenDialog::IsEnabled(int id) const {
    return IsWindowEnabled(Control(id)) != FALSE;
}
bool CDrivenDialog::IsVisible(int id) const {
    return IsWindowVisible(Control(id)) != FALSE;
}
bool CDrivenDialog::IsChecked(int id) const {
    return Ask(Control(id), BM_GETCHECK) == BST_CHECKED;
}

std::optional<std::string> CDrivenDialog::ToolTip(int id) const {
    constexpr std::size_t kLongestText = 512;
    DWORD processId = 0;
    GetWindowThreadProcessId(m_window, &processId);
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, TOOLTIPS_CLASSW, nullptr)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner != processId) {
            continue;
        }
        CRemoteMemory memory(m_process, sizeof(TOOLINFOW) + kLongestText * sizeof(wchar_t));
        TOOLINFOW tool{};
        tool.cbSize = sizeof tool;
        tool.uFlags = TTF_IDISHWND;
        tool.hwnd = m_window;
        tool.uId = reinterpret_cast<UINT_PTR>(Control(id));
        tool.lpszText = reinterpret_cast<wchar_t*>(static_cast<char*>(memory.Address()) + sizeof tool);
        memory.Write(&tool, sizeof tool);
        Ask(window, TTM_GETTEXTW, kLongestText, reinterpret_cast<LPARAM>(memory.Address()));
        std::wstring text(kLongestText, L'\0');
        memory.Read(text.data(), text.size() * sizeof(wchar_t), sizeof tool);
        text.resize(text.find(L'\0'));
        if (!text.empty()) {
            return Utf8Of(text);
        }
    }
    return std::nullopt;
}

std::string CDrivenDialog::Pane(EPane pane) const {
    const HWND bar = ChildOfClass(m_window, STATUSCLASSNAMEW);
    if (bar == nullptr) {
        throw CDriveFailure("the dialog has no status bar");
    }
    const auto index = static_cast<WPARAM>(pane);
    // The text may become longer between the two messages.
    constexpr std::size_t kRoom = 4096;
    const auto length = static_cast<std::size_t>(LOWORD(Ask(bar, SB_GETTEXTLENGTHW, index)));
    CRemoteMemory memory(m_process, (length + kRoom) * sizeof(wchar_t));
    Ask(bar, SB_GETTEXTW, index, reinterpret_cast<LPARAM>(memory.Address()));
    std::wstring text(length + kRoom, L'\0');
    memory.Read(text.data(), text.size() * sizeof(wchar_t));
    text.resize(text.find(L'\0'));
    return Utf8Of(text);
}

std::optional<int> CDrivenDialog::ProgressPosition() const {
    return AskProgressBar(m_window, PBM_GETPOS);
}

std::optional<int> CDrivenDialog::ProgressRange() const {
    return AskProgressBar(m_window, PBM_GETRANGE);
}

COLORREF CDrivenDialog::ProgressColour(int perMille) const {
    const HWND bar = ChildOfClass(m_window, kProgressClass);
    RECT place{};
    if (bar == nullptr || GetWindowRect(bar, &place) == FALSE) {
        return CLR_INVALID;
    }
    const int x = place.left + MulDiv(place.right - place.left, perMille, 1000);
    const HDC screen = GetDC(nullptr);
    const COLORREF colour = GetPixel(screen, x, (place.top + place.bottom) / 2);
    ReleaseDC(nullptr, screen);
    return colour;
}

void CDrivenDialog::Press(int id) const {
    PressButton(Control(id));
}

void CDrivenDialog::PressAndWait(int id) const {
    PressButtonAndWait(Control(id));
}

std::vector<std::string> CDrivenDialog::Entries(int id) const {
    const HWND list = Control(id);
    std::vector<std::string> entries;
    const LRESULT count = Ask(list, CB_GETCOUNT);
    for (LRESULT index = 0; index < count; ++index) {
        const auto position = static_cast<WPARAM>(index);
        std::wstring text(static_cast<std::size_t>(Ask(list, CB_GETLBTEXTLEN, position)) + 1, L'\0');
        Ask(list, CB_GETLBTEXT, position, reinterpret_cast<LPARAM>(text.data()));
        text.pop_back();
        entries.push_back(Utf8Of(text));
    }
    return entries;
}

int CDrivenDialog::Selection(int id) const {
    return static_cast<int>(Ask(Control(id), CB_GETCURSEL));
}

void CDrivenDialog::Select(int id, int index) const {
    const HWND list = Control(id);
    Ask(list, CB_SETCURSEL, static_cast<WPARAM>(index));
    Ask(m_window, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(list));
}

void CDrivenDialog::Select(int id, const std::string& text) const {
    const std::vector<std::string> entries = Entries(id);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        if (entries[index] == text) {
            Select(id, static_cast<int>(index));
            return;
        }
    }
    throw CDriveFailure("list " + std::to_string(id) + " has no entry \"" + text + "\"");
}

bool CDrivenDialog::AcceptsDrops() const {
    return (GetWindowLongPtrW(m_window, GWL_EXSTYLE) & WS_EX_ACCEPTFILES) != 0;
}

void CDrivenDialog::Drop(const std::vector<std::string>& paths) const {
    Require("dialog that accepts dropped files", [this] { return AcceptsDrops(); });
    const std::vector<char> block = DropBlock(paths);
    CRemoteMemory memory(m_process, block.size());
    memory.Write(block.data(), block.size());
    PostMessageW(m_window, WM_DROPFILES, reinterpret_cast<WPARAM>(memory.Release()), 0);
}

void CDrivenDialog::Choose(const std::string& path) const {
    Drop({path});
    // The last thing that the dialog does with an accepted file. The name field may have had this name before.
    Require("dialog that has accepted " + path, [this] { return !AcceptsDrops(); });
    if (Folded(Text(IDC_FILE_NAME)) != Folded(FileNameOf(path))) {
        throw CDriveFailure("the dialog has chosen " + Text(IDC_FILE_NAME) + " instead of " + path);
    }
}

void CDrivenDialog::PressCloseBox() const {
    PostMessageW(m_window, WM_SYSCOMMAND, SC_CLOSE, 0);
}

bool CDrivenDialog::IsTopMost() const {
    return (GetWindowLongPtrW(m_window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

RECT CDrivenDialog::ScreenRectangle() const {
    RECT rectangle{};
    GetWindowRect(m_window, &rectangle);
    return rectangle;
}

}  // namespace vantrel::test
