#include "tests/window/conversions/console_program.h"

#include <windows.h>

#include "app/converter/quoted_arguments.h"
#include "app/resource_file.h"
#include "files/utf.h"

namespace vantrel::test {

int RunConsoleProgram(const std::vector<std::string>& words) {
    std::vector<std::string> all = {Utf8Of(ProgramFolder()) + "vantrel.exe"};
    all.insert(all.end(), words.begin(), words.end());
    std::wstring line = WideOf(QuotedCommandLine(all));
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        return -1;
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(status);
}

}  // namespace vantrel::test
