// The system's dialogs that open or name an image file.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

/// A stored filter, in which the character 1 separates labels and patterns, as the dialogs take it.
std::wstring FilterOf(std::wstring stored);

class CImageFileDialog {
public:
    enum class EPurpose { Open, Save };

    /// The filter is a list of label and patterns in turn, each ended by a zero character, the list by another; when
    /// it is empty the dialog offers "All Files".
    CImageFileDialog(EPurpose purpose, HWND owner, std::wstring initialFolder, std::wstring initialName,
                     std::wstring filter, DWORD extraFlags = 0);

    /// Shows the dialog; true when the user chose a file.
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
