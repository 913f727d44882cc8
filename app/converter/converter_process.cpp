#include "app/converter/converter_process.h"

#include <shellapi.h>

#include "app/converter/batch_line.h"
#include "app/converter/quoted_arguments.h"
#include "app/resource_file.h"
#include "files/native_file.h"
#include "files/utf.h"
#include "resources/resource_ids.h"

namespace vantrel {

namespace {

constexpr wchar_t kResourceFileName[] = L"~tmp.zzz";
constexpr wchar_t kResourceType[] = L"BIN";

/// The system may keep a program's file open for a moment after the program has ended.
constexpr int kRemovalTries = 50;
constexpr DWORD kRemovalPause = 20;  // milliseconds

}  // namespace

CConverterProcess::~CConverterProcess() {
    if (m_process != nullptr) {
        CloseHandle(m_process);
    }
}

void CConverterProcess::PlaceConverter(const std::string& folder) {
    std::wstring written;
    if (!WriteResourceFile(kResourceFileName, kResourceType, IDR_RAW_CONVERTER, written)) {
        // The program's folder may be read-only; the image's folder takes the outputs anyway.
        DeleteFileW(written.c_str());
        written = WideOf(folder) + kResourceFileName;
        WriteResourceTo(written, kResourceType, IDR_RAW_CONVERTER);
    }
    CopyFileW(written.c_str(), WideOf(folder + kConverterFileName).c_str(), FALSE);
    DeleteFileW(written.c_str());
}

void CConverterProcess::StartBatchFile(const std::string& folder, const std::string& name) {
    const std::wstring directory = WideOf(folder);
    // The full path, so that no other file of this name is found first.
    const std::wstring file = WideOf(folder + name);
    SHELLEXECUTEINFOW execution = {};
    execution.cbSize = sizeof execution;
    execution.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
    execution.lpFile = file.c_str();
    execution.lpParameters = L"";
    execution.lpDirectory = directory.c_str();
    execution.nShow = SW_HIDE;
    m_process = ShellExecuteExW(&execution) ? execution.hProcess : nullptr;
}

void CConverterProcess::StartConverter(const std::string& folder, const std::vector<std::string>& arguments) {
    const std::string program = folder + kConverterFileName;
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::wstring line = WideOf(QuotedCommandLine(words));
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(WideOf(program).c_str(), line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                       WideOf(folder).c_str(), &startup, &process)) {
        CloseHandle(process.hThread);
        m_process = process.hProcess;
    }
}

bool CConverterProcess::HasFinished() {
    return m_process == nullptr || WaitForSingleObject(m_process, 0) != WAIT_TIMEOUT;
}

void CConverterProcess::RemoveConverter(const std::string& folder) {
    const std::string path = folder + kConverterFileName;
    for (int attempt = 0; attempt < kRemovalTries && !RemoveFile(path); ++attempt) {
        if (FileKindOf(path) == EFileKind::Missing) {
            return;
        }
        Sleep(kRemovalPause);
    }
}

}  // namespace vantrel
