#include "app/ui/image_file_dialog.h"

#include <commdlg.h>

#include <algorithm>
#include <utility>

#include "app/held_quit.h"

namespace vantrel {
namespace {

/// Characters of the longest path in Windows, and of a file name.
constexpr std::size_t kPathRoom = 32768;
constexpr std::size_t kTitleRoom = 260;

constexpr wchar_t kAllFiles[] = L"All Files\0*.*\0";

}  // namespace

std::wstring FilterOf(std::wstring stored) {
    std::replace(stored.begin(), stored.end(), L'\x01', L'\0');
    return stored;
}

CImageFileDialog::CImageFileDialog(EPurpose purpose, HWND owner, std::wstring initialFolder, std::wstring initialName,
                                   std::wstring filter, DWORD extraFlags)
    : m_purpose(purpose),
      m_owner(owner),
      m_initialFolder(std::move(initialFolder)),
      m_filter(filter.empty() ? std::wstring(kAllFiles, std::size(kAllFiles)) : std::move(filter)),
      // No hook, because the system would show the dialog of its oldest versions.
      m_flags(OFN_EXPLORER | OFN_ENABLESIZING | extraFlags |
              (purpose == EPurpose::Open ? OFN_READONLY : OFN_HIDEREADONLY)),
      m_file(std::move(initialName)),
      m_title(kTitleRoom, L'\0') {
    m_file.resize(kPathRoom);
    m_filter.push_back(L'\0');
}

bool CImageFileDialog::DoModal() {
    OPENFILENAMEW record{};
    record.lStructSize = sizeof record;
    record.hwndOwner = m_owner;
    record.lpstrFilter = m_filter.c_str();
    record.lpstrFile = m_file.data();
    record.nMaxFile = static_cast<DWORD>(m_file.size());
    record.lpstrFileTitle = m_title.data();
    record.nMaxFileTitle = static_cast<DWORD>(m_title.size());
    record.lpstrInitialDir = m_initialFolder.c_str();
    record.Flags = m_flags;
    const CHeldQuit held;
    const BOOL chosen = m_purpose == EPurpose::Open ? GetOpenFileNameW(&record) : GetSaveFileNameW(&record);
    if (chosen == FALSE) {
        return false;
    }
    m_file.resize(m_file.find(L'\0'));
    m_nameOffset = record.nFileOffset;
    return true;
}

std::wstring CImageFileDialog::FolderPath() const {
    std::wstring folder = m_file.substr(0, m_nameOffset);
    const bool isRoot = folder.size() == 3 && folder[1] == L':';
    if (!folder.empty() && folder.back() == L'\\' && !isRoot) {
        folder.pop_back();
    }
    return folder;
}

std::wstring CImageFileDialog::FileName() const {
    return m_file.substr(m_nameOffset);
}

}  // namespace vantrel
