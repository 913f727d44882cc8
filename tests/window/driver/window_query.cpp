#include "tests/window/driver/window_query.h"

#include <array>

#include "files/utf.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {
namespace {

using Windows = std::vector<HWND>;

struct SProcessWindows {
    DWORD processId;
    Windows windows;
};

BOOL CALLBACK CollectOfProcess(HWND window, LPARAM parameter) {
    auto& search = *reinterpret_cast<SProcessWindows*>(parameter);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == search.processId && IsWindowVisible(window) != FALSE) {
        search.windows.push_back(window);
    }
    return TRUE;
}

BOOL CALLBACK CollectAll(HWND window, LPARAM parameter) {
    reinterpret_cast<Windows*>(parameter)->push_back(window);
    return TRUE;
}

void RequirePressable(HWND button) {
    if (IsWindowEnabled(button) == FALSE || IsWindowVisible(button) == FALSE) {
        throw CDriveFailure("the button \"" + TextOf(button) + "\" is greyed or hidden");
    }
}

}  // namespace

LRESULT Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR result = 0;
    const auto limit = static_cast<UINT>(kSoon.count());
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, limit, &result) == 0) {
        throw CDriveFailure("a window does not answer to message " + std::to_string(message));
    }
    return static_cast<LRESULT>(result);
}

std::string TextOf(HWND window) {
    const auto length = static_cast<std::size_t>(Ask(window, WM_GETTEXTLENGTH));
    std::wstring text(length + 1, L'\0');
    const LRESULT copied = Ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(copied));
    return Utf8Of(text);
}

void SetTextOf(HWND window, const std::string& text) {
    const std::wstring wide = WideOf(text);
    Ask(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(wide.c_str()));
}

std::wstring ClassOf(HWND window) {
    std::array<wchar_t, 256> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return {name.data(), static_cast<std::size_t>(length)};
}

std::vector<HWND> WindowsOf(DWORD processId) {
    SProcessWindows search{processId, {}};
    EnumWindows(CollectOfProcess, reinterpret_cast<LPARAM>(&search));
    return search.windows;
}

HWND FindWindowOf(DWORD processId, const std::function<bool(HWND)>& condition) {
    for (const HWND window : WindowsOf(processId)) {
        if (condition(window)) {
            return window;
        }
    }
    return nullptr;
}

std::vector<HWND> ChildrenOf(HWND window) {
    Windows children;
    EnumChildWindows(window, CollectAll, reinterpret_cast<LPARAM>(&children));
    return children;
}

void PressButton(HWND button) {
    RequirePressable(button);
    PostMessageW(button, BM_CLICK, 0, 0);
}

void PressButtonAndWait(HWND button) {
    RequirePressable(button);
    Ask(button, BM_CLICK);
}

}  // namespace vantrel::test
