// Records what the main dialog asks of the system. Its calls come through the pointers that the import library would
// define; system_calls.cpp defines them.
#pragma once

// clang-format off
#include <windows.h>
#include <commdlg.h>  // needs the types of windows.h
// clang-format on

#include <string>
#include <utility>
#include <vector>

namespace vantrel::test {

struct SRecordedBox {
    std::wstring text;
    std::wstring caption;
    UINT style;
};

struct SRecordedFileDialog {
    bool isSave;
    OPENFILENAMEW record;  ///< The pointers in it are valid during the call only.
    std::wstring filter;   ///< With its zero characters, without the last of them.
    std::wstring initialFolder;
    std::wstring initialName;
    std::wstring title;
};

/// The calls since the last Clear. Calls that change the screen or a control are passed on to the system.
struct SSystemCalls {
    std::vector<std::pair<int, bool>> enabled;  ///< EnableWindow: id of the control, and whether it is enabled.
    std::vector<bool> drops;                    ///< DragAcceptFiles: whether files are accepted.
    std::vector<RECT> frames;  ///< Frames of an animation, each drawn by PatBlt and removed by another.
    std::vector<std::pair<UINT_PTR, UINT>> timers;  ///< SetTimer: id and period.
    std::vector<SRecordedBox> boxes;                ///< MessageBox; not shown.
    std::vector<SRecordedFileDialog> fileDialogs;   ///< Open and save dialogs; not shown.

    std::vector<std::wstring> libraries;  ///< LoadLibrary: names or paths.

    std::wstring chosenFile;      ///< The answer of the file dialogs; empty: cancelled.
    bool areAnimationsOn = true;  ///< The answer of the system's settings for animations.

    void Clear() { *this = SSystemCalls(); }
};
extern SSystemCalls g_calls;

}  // namespace vantrel::test
