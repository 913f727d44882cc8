// The system's dialogs for choosing a file to open or a path to save to.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// Converts a filter whose separators are the character 1 to the form that the dialogs expect.
std::wstring FilterOf(std::wstring stored);

class CImageFileDialog {
public:
    enum class EPurpose { Open, Save };

    /// The filter alternates labels and patterns, each with a closing zero character. Empty: "All Files".
    CImageFileDialog(EPurpose purpose, HWND owner, std::wstring initialFolder, std::wstring initialName,
                     std::wstring filter, DWORD extraFlags = 0);

    /// Shows the dialog. Returns true if the user chose a file.
    bool DoModal();

    /// The folder of the chosen file, without a closing separator except that of a drive's root.
    std::wstring FolderPath() const;
    std::wstring FileName() const;

private:
    EPurpose m_purpose;
    HWND m_owner;
    std::wstring m_initialFolder;
    std::wstring m_filter;
    DWORD m_flags;
    std::wstring m_file;
    std::wstring m_title;
    std::size_t m_nameOffset = 0;
};

}  // namespace vantrel
