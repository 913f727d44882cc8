// The registry is searched for systems on which the shell does not know the target, only the browser.
#include "app/ui/hyperlink.h"

#include <shellapi.h>

#include <array>

#include "app/message_box.h"

namespace vantrel {
namespace {

constexpr INT_PTR kLastShellError = 32;  // results of ShellExecute up to this one are error codes

/// The default value of a key below HKEY_CLASSES_ROOT. Empty if there is none.
std::wstring ClassValue(const std::wstring& key) {
    std::array<wchar_t, 1024> value = {};
    auto size = static_cast<DWORD>(sizeof value);
    const LSTATUS status =
        RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, value.data(), &size);
    return status == ERROR_SUCCESS ? value.data() : std::wstring();
}

std::wstring SystemMessage(DWORD error) {
    std::array<wchar_t, 512> text = {};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text.data(),
                   static_cast<DWORD>(text.size()), nullptr);
    std::wstring message = text.data();
    message.erase(message.find_last_not_of(L"\r\n ") + 1);  // the system ends its messages with a line break
    return message.empty() ? L"Error " + std::to_wstring(error) : message;
}

/// The last error of the system, never ERROR_SUCCESS.
DWORD FailureCode() {
    const DWORD error = GetLastError();
    return error != ERROR_SUCCESS ? error : static_cast<DWORD>(ERROR_NO_ASSOCIATION);
}

bool Start(std::wstring commandLine) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process) ==
        FALSE) {
        return false;
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return true;
}

}  // namespace

std::wstring CommandLineFor(const std::wstring& command, const std::wstring& target) {
    static constexpr wchar_t kPlace[] = L"%1";
    std::wstring line = command;
    const std::size_t place = line.find(kPlace);
    if (place != std::wstring::npos) {
        return line.replace(place, 2, target);
    }
    return line + L" \"" + target + L"\"";
}

std::wstring BrowserCommand() {
    const std::wstring kind = ClassValue(L".htm");
    return kind.empty() ? std::wstring() : ClassValue(kind + L"\\shell\\open\\command");
}

std::wstring OpenTarget(HWND owner, const std::wstring& target) {
    SetLastError(ERROR_SUCCESS);
    const HINSTANCE result = ShellExecuteW(owner, L"open", target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    if (reinterpret_cast<INT_PTR>(result) > kLastShellError) {
        return {};
    }
    const DWORD error = FailureCode();
    const std::wstring command = BrowserCommand();
    if (!command.empty() && Start(CommandLineFor(command, target))) {
        return {};
    }
    return SystemMessage(error);
}

void OpenHyperlink(HWND owner, const std::wstring& target) {
    const std::wstring failure = OpenTarget(owner, target);
    if (!failure.empty()) {
        ShowMessage(owner, L"Unable to open hyperlink:\n\n" + failure);
    }
}

}  // namespace vantrel
