#include "tests/window/driver/tested_program.h"

#include <utility>

#include "app/resource_file.h"
#include "files/utf.h"
#include "resources/resource_ids.h"
#include "tests/window/driver/poll.h"
#include "tests/window/driver/window_query.h"

namespace vantrel::test {
namespace {

constexpr wchar_t kProgramName[] = L"quorn_vantrel.exe";

/// The exit status of a terminated program.
constexpr UINT kEndedByForce = 99;

bool IsMainDialog(HWND window) {
    return GetDlgItem(window, IDC_COMPRESSION) != nullptr && GetDlgItem(window, IDC_SOUND) != nullptr;
}

}  // namespace

CTestedProgram::CTestedProgram(std::string folder) : m_folder(std::move(folder)) {
    const std::wstring source = ProgramFolder() + kProgramName;
    const std::wstring target = WideOf(m_folder) + kProgramName;
    if (CopyFileW(source.c_str(), target.c_str(), FALSE) == FALSE) {
        throw CDriveFailure("cannot copy " + Utf8Of(source) + " to " + Utf8Of(target));
    }
}

CTestedProgram::~CTestedProgram() {
    if (m_process != nullptr) {
        if (IsRunning()) {
            TerminateProcess(m_process, kEndedByForce);
        }
        // The folder can be removed only after the program has closed its files.
        WaitForSingleObject(m_process, static_cast<DWORD>(kSoon.count()));
        CloseHandle(m_process);
    }
}

CDrivenDialog CTestedProgram::Start(const std::string& workingFolder) {
    const std::wstring program = WideOf(m_folder) + kProgramName;
    const std::wstring folder = WideOf(workingFolder);
    std::wstring commandLine = L"\"" + program + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    // The system may keep a new copy open for a moment.
    const auto starts = [&] {
        return CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(),
                              &startup, &process) != FALSE;
    };
    if (!WaitUntil(starts)) {
        throw CDriveFailure("cannot start " + Utf8Of(program) + ": error " + std::to_string(GetLastError()));
    }
    CloseHandle(process.hThread);
    if (m_process != nullptr) {
        CloseHandle(m_process);
    }
    m_process = process.hProcess;
    m_processId = process.dwProcessId;
    HWND window = nullptr;
    Require("main dialog", [&] {
        window = FindWindowOf(m_processId, IsMainDialog);
        return window != nullptr || !IsRunning();
    });
    if (window == nullptr) {
        throw CDriveFailure("the program ended with status " + std::to_string(WaitForEnd()) + " without its dialog");
    }
    return {m_process, window};
}

bool CTestedProgram::IsRunning() const {
    return m_process != nullptr && WaitForSingleObject(m_process, 0) == WAIT_TIMEOUT;
}

DWORD CTestedProgram::WaitForEnd(Milliseconds deadline) const {
    Require(
        "end of the program", [this] { return !IsRunning(); }, deadline);
    DWORD status = 0;
    GetExitCodeProcess(m_process, &status);
    return status;
}

}  // namespace vantrel::test
