// A file dialog for choosing a folder. It creates a missing folder if the user agrees.
#pragma once

#include <windows.h>

#include <string>

namespace vantrel {

class CSelectFolderDialog {
public:
    CSelectFolderDialog(std::wstring initialFolder, HWND owner);

    /// Returns IDOK if a folder was chosen, otherwise IDCANCEL.
    int DoModal();

    /// The chosen folder, without a closing separator except that of a drive's root.
    const std::wstring& FolderPath() const { return m_folder; }

private:
    static UINT_PTR CALLBACK HookProcedure(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK DialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                            DWORD_PTR self);
    void OnOpened(HWND page);
    void OnFolderShown(HWND page);
    void OnSelection(HWND page);
    /// Reads the name field. Returns true if it names a folder that exists or has been created.
    bool TakeEntry(HWND dialog);
    std::wstring EntryPath(HWND dialog) const;

    std::wstring m_folder;
    HWND m_owner;
    bool m_accepted = false;
};

}  // namespace vantrel
