#include "tests/window/program/system_calls.h"

#include <shellapi.h>

#include <cwchar>

#include "tests/window/replaced_call.h"

namespace vantrel::test {

SSystemCalls g_calls;

namespace {

/// A function of a system library, past the pointers below.
template <typename Function>
Function* SystemFunction(const wchar_t* library, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(library), name)));
}

BOOL WINAPI RecordEnable(HWND window, BOOL isEnabled) {
    g_calls.enabled.emplace_back(GetDlgCtrlID(window), isEnabled != FALSE);
    return SystemFunction<decltype(EnableWindow)>(L"user32.dll", "EnableWindow")(window, isEnabled);
}

void WINAPI RecordDrops(HWND window, BOOL isAccepted) {
    g_calls.drops.push_back(isAccepted != FALSE);
    SystemFunction<decltype(DragAcceptFiles)>(L"shell32.dll", "DragAcceptFiles")(window, isAccepted);
}

UINT_PTR WINAPI RecordTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
    g_calls.timers.emplace_back(id, period);
    return SystemFunction<decltype(SetTimer)>(L"user32.dll", "SetTimer")(window, id, period, procedure);
}

/// The upper edge of a frame is drawn first and the lower edge second.
BOOL WINAPI RecordFrame(HDC dc, int x, int y, int width, int height, DWORD operation) {
    constexpr int kEdges = 4;
    static int edge = 0;
    if (operation == DSTINVERT) {
        if (edge == 0) {
            g_calls.frames.push_back({x, y, x + width, y + height});
        } else if (edge == 1) {
            g_calls.frames.back().bottom = y + height;
        }
        edge = (edge + 1) % kEdges;
    }
    return SystemFunction<decltype(PatBlt)>(L"gdi32.dll", "PatBlt")(dc, x, y, width, height, operation);
}

BOOL WINAPI AnswerSetting(UINT setting, UINT number, void* value, UINT update) {
    if (setting == SPI_GETCLIENTAREAANIMATION) {
        *static_cast<BOOL*>(value) = g_calls.areAnimationsOn ? TRUE : FALSE;
        return TRUE;
    }
    if (setting == SPI_GETANIMATION) {
        static_cast<ANIMATIONINFO*>(value)->iMinAnimate = g_calls.areAnimationsOn ? 1 : 0;
        return TRUE;
    }
    return SystemFunction<decltype(SystemParametersInfoW)>(L"user32.dll", "SystemParametersInfoW")(setting, number,
                                                                                                   value, update);
}

HMODULE WINAPI RecordLibrary(const wchar_t* path) {
    g_calls.libraries.emplace_back(path);
    return SystemFunction<decltype(LoadLibraryW)>(L"kernel32.dll", "LoadLibraryW")(path);
}

/// Like a Windows 7 without updates, which knows none of the flags that choose the folders to search.
HMODULE WINAPI RefuseLibraryFlags(const wchar_t*, HANDLE, DWORD) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

int WINAPI RecordBox(HWND, const wchar_t* text, const wchar_t* caption, UINT style) {
    g_calls.boxes.push_back({text, caption, style});
    return IDOK;
}

std::wstring TextOf(const wchar_t* text) {
    return text == nullptr ? L"" : text;
}

BOOL RecordFileDialog(OPENFILENAMEW& record, bool isSave) {
    const wchar_t* end = record.lpstrFilter;
    while (*end != L'\0') {
        end += std::wcslen(end) + 1;
    }
    g_calls.fileDialogs.push_back({isSave,
                                   record,
                                   {record.lpstrFilter, end},
                                   TextOf(record.lpstrInitialDir),
                                   TextOf(record.lpstrFile),
                                   TextOf(record.lpstrTitle)});
    const std::wstring& chosen = g_calls.chosenFile;
    if (chosen.empty()) {
        return FALSE;
    }
    std::wcscpy(record.lpstrFile, chosen.c_str());
    record.nFileOffset = static_cast<WORD>(chosen.find_last_of(L'\\') + 1);
    return TRUE;
}

BOOL WINAPI RecordOpenDialog(OPENFILENAMEW* record) {
    return RecordFileDialog(*record, false);
}

BOOL WINAPI RecordSaveDialog(OPENFILENAMEW* record) {
    return RecordFileDialog(*record, true);
}

}  // namespace
}  // namespace vantrel::test

REPLACE_CALL(EnableWindow, vantrel::test::RecordEnable)
REPLACE_CALL(DragAcceptFiles, vantrel::test::RecordDrops)
REPLACE_CALL(SetTimer, vantrel::test::RecordTimer)
REPLACE_CALL(PatBlt, vantrel::test::RecordFrame)
REPLACE_CALL(SystemParametersInfoW, vantrel::test::AnswerSetting)
REPLACE_CALL(LoadLibraryW, vantrel::test::RecordLibrary)
REPLACE_CALL(LoadLibraryExW, vantrel::test::RefuseLibraryFlags)
REPLACE_CALL(MessageBoxW, vantrel::test::RecordBox)
REPLACE_CALL(GetOpenFileNameW, vantrel::test::RecordOpenDialog)
REPLACE_CALL(GetSaveFileNameW, vantrel::test::RecordSaveDialog)
