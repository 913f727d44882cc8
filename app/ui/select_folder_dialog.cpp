#include "app/ui/select_folder_dialog.h"

#include <commctrl.h>
#include <commdlg.h>
#include <dlgs.h>
#include <shellapi.h>
#include <shlobj.h>

#include <utility>

#include "app/held_quit.h"
#include "app/ui/window.h"

namespace vantrel {
namespace {

constexpr wchar_t kTitle[] = L"Select folder";
constexpr wchar_t kInvalidCaption[] = L"Invalid Folder";
constexpr wchar_t kCreateQuestion[] = L"This path does not exist. Do you want to create it?";
constexpr wchar_t kInvalidText[] = L"This is not a folder that can be used.";
/// No file matches this pattern, so the list shows folders only.
constexpr wchar_t kFoldersOnly[] = L"Folders\0*..*\0";

constexpr std::size_t kPathRoom = 32768;
constexpr UINT_PTR kSubclassId = 1;

std::wstring AskDialog(HWND dialog, UINT message) {
    std::wstring text(kPathRoom, L'\0');
    const LRESULT length = SendMessageW(dialog, message, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(length > 0 ? static_cast<std::size_t>(length) - 1 : 0);
    return text;
}

/// The name field: a combo box in newer dialogs, an edit field in older ones.
HWND NameField(HWND dialog) {
    const HWND combo = GetDlgItem(dialog, cmb13);
    return combo != nullptr ? combo : GetDlgItem(dialog, edt1);
}

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool MakeWholePath(const std::wstring& path) {
    return SHCreateDirectoryExW(nullptr, path.c_str(), nullptr) == ERROR_SUCCESS || IsFolder(path);
}

/// The full path without a closing separator, except that of a drive's root.
std::wstring FullPath(const std::wstring& path) {
    std::wstring full(kPathRoom, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    while (full.size() > 3 && (full.back() == L'\\' || full.back() == L'/')) {
        full.pop_back();
    }
    return full;
}

std::wstring Joined(const std::wstring& folder, const std::wstring& entry) {
    const bool isAbsolute = entry.find(L':') != std::wstring::npos || entry.starts_with(L"\\\\");
    if (isAbsolute || folder.empty()) {
        return entry;
    }
    if (entry.starts_with(L'\\')) {
        return folder.substr(0, 2) + entry;
    }
    return folder + (folder.back() == L'\\' ? L"" : L"\\") + entry;
}

}  // namespace

CSelectFolderDialog::CSelectFolderDialog(std::wstring initialFolder, HWND owner)
    : m_folder(std::move(initialFolder)), m_owner(owner) {}

int CSelectFolderDialog::DoModal() {
    std::wstring file(kPathRoom, L'\0');
    OPENFILENAMEW record{};
    record.lStructSize = sizeof record;
    record.hwndOwner = m_owner;
    record.lpstrFilter = kFoldersOnly;
    record.lpstrFile = file.data();
    record.nMaxFile = static_cast<DWORD>(file.size());
    record.lpstrInitialDir = m_folder.empty() ? nullptr : m_folder.c_str();
    record.lpstrTitle = kTitle;
    record.Flags =
        OFN_EXPLORER | OFN_ENABLEHOOK | OFN_ENABLESIZING | OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT | OFN_NOCHANGEDIR;
    record.lpfnHook = HookProcedure;
    record.lCustData = reinterpret_cast<LPARAM>(this);
    const CHeldQuit held;
    GetSaveFileNameW(&record);
    return m_accepted ? IDOK : IDCANCEL;
}

UINT_PTR CALLBACK CSelectFolderDialog::HookProcedure(HWND page, UINT message, WPARAM, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        const auto* const record = reinterpret_cast<const OPENFILENAMEW*>(lParam);
        SetWindowLongPtrW(page, GWLP_USERDATA, static_cast<LONG_PTR>(record->lCustData));
        return 0;
    }
    auto* const self = reinterpret_cast<CSelectFolderDialog*>(GetWindowLongPtrW(page, GWLP_USERDATA));
    if (message != WM_NOTIFY || self == nullptr) {
        return 0;
    }
    switch (reinterpret_cast<const NMHDR*>(lParam)->code) {
        case CDN_INITDONE:
            self->OnOpened(page);
            break;
        case CDN_FOLDERCHANGE:
            self->OnFolderShown(page);
            break;
        case CDN_SELCHANGE:
            self->OnSelection(page);
            break;
        default:
            break;
    }
    return 0;
}

void CSelectFolderDialog::OnOpened(HWND page) {
    const HWND dialog = GetParent(page);
    SendMessageW(dialog, CDM_HIDECONTROL, stc2, 0);
    SendMessageW(dialog, CDM_HIDECONTROL, cmb1, 0);
    SendMessageW(dialog, CDM_SETCONTROLTEXT, stc3, reinterpret_cast<LPARAM>(L"Folder:"));
    SendMessageW(dialog, CDM_SETCONTROLTEXT, IDOK, reinterpret_cast<LPARAM>(L"Select"));
    SetWindowSubclass(dialog, DialogProcedure, kSubclassId, reinterpret_cast<DWORD_PTR>(this));
}

void CSelectFolderDialog::OnFolderShown(HWND page) {
    const HWND dialog = GetParent(page);
    SetWindowTextW(NameField(dialog), AskDialog(dialog, CDM_GETFOLDERPATH).c_str());
}

void CSelectFolderDialog::OnSelection(HWND page) {
    const HWND dialog = GetParent(page);
    const std::wstring selected = AskDialog(dialog, CDM_GETFILEPATH);
    if (IsFolder(selected)) {
        SetWindowTextW(NameField(dialog), selected.c_str());
    }
}

LRESULT CALLBACK CSelectFolderDialog::DialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                                      DWORD_PTR self) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDOK && HIWORD(wParam) == BN_CLICKED) {
        auto& folderDialog = *reinterpret_cast<CSelectFolderDialog*>(self);
        if (folderDialog.TakeEntry(dialog)) {
            folderDialog.m_accepted = true;
            EndDialog(dialog, IDOK);
        }
        return 0;
    }
    return DefSubclassProc(dialog, message, wParam, lParam);
}

std::wstring CSelectFolderDialog::EntryPath(HWND dialog) const {
    const std::wstring entry = CWindow(NameField(dialog)).Text();
    const std::wstring shown = AskDialog(dialog, CDM_GETFOLDERPATH);
    return entry.empty() ? shown : Joined(shown, entry);
}

bool CSelectFolderDialog::TakeEntry(HWND dialog) {
    const std::wstring entry = EntryPath(dialog);
    const bool isUsable = !entry.empty() && entry.find_first_of(L"*?\"<>|") == std::wstring::npos;
    const std::wstring path = isUsable ? FullPath(entry) : std::wstring();
    if (!path.empty() && GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        if (MessageBoxW(dialog, kCreateQuestion, kTitle, MB_YESNO | MB_ICONQUESTION) != IDYES) {
            return false;
        }
        MakeWholePath(path);
    }
    if (path.empty() || !IsFolder(path)) {
        MessageBoxW(dialog, kInvalidText, kInvalidCaption, MB_OK | MB_ICONINFORMATION);
        return false;
    }
    m_folder = path;
    return true;
}

}  // namespace vantrel
