// The input of the main dialog: chosen in the file dialog or dropped on the window.
// clang-format off
#include <windows.h>
#include <shellapi.h>  // needs the types of windows.h
// clang-format on

#include "app/main_dialog.h"
#include "app/message_box.h"
#include "app/ui/image_file_dialog.h"
#include "app/ui/select_folder_dialog.h"
#include "files/native_file.h"
#include "files/path.h"
#include "files/utf.h"
#include "resources/resource_ids.h"

namespace vantrel {
namespace {

/// Characters of a field that are used.
constexpr std::size_t kFieldLimit = 2048;

/// Pairs of label and patterns. The first label deliberately names fewer extensions than its patterns.
constexpr wchar_t kImageFilter[] =
    L"iml/iso/dax Files(*.iml/iso/bin/dax/cso)\x01*.iml;*.iso;*.bin;*.dax;*.cso\x01"
    L"iml Files(*.iml)\x01*.iml\x01"
    L"iso Files(*.iso)\x01*.iso\x01"
    L"dax Files(*.dax)\x01*.dax\x01"
    L"cso Files(*.cso)\x01*.cso\x01"
    L"All files (*.*)\x01*.*\x01";

constexpr wchar_t kBrowseRejection[] = L"invalid iso or iml or bin or csofile.";
constexpr wchar_t kDropRejection[] = L"invalid iso or iml or bin or cso file.";

/// The path of the first dropped file. All others are ignored.
std::wstring FirstDroppedFile(HDROP drop) {
    std::wstring path(DragQueryFileW(drop, 0, nullptr, 0), L'\0');
    DragQueryFileW(drop, 0, path.data(), static_cast<UINT>(path.size()) + 1);
    return path;
}

}  // namespace

std::wstring CMainDialog::FieldText(int controlId) const {
    return Item(controlId).Text().substr(0, kFieldLimit);
}

SInput CMainDialog::ReadInput() const {
    const int entry = m_compressionCombo.Selection();
    return {Utf8Of(FieldText(IDC_FOLDER)), Utf8Of(FieldText(IDC_FILE_NAME)),
            entry < 0 ? std::nullopt : std::optional(entry + 1)};
}

void CMainDialog::OnBrowse() {
    SetCurrentDirectoryW(FieldText(IDC_FOLDER).c_str());
    CImageFileDialog dialog(CImageFileDialog::EPurpose::Open, m_window, WideOf(CurrentFolder()), L"",
                            FilterOf(kImageFilter));
    if (!dialog.DoModal()) {
        ShowMessage(m_window, L"You cancelled.", L"No File Chosen");
        return;
    }
    Item(IDC_FOLDER).SetText(WideOf(WithSeparator(Utf8Of(dialog.FolderPath()))));
    Item(IDC_FILE_NAME).SetText(dialog.FileName());
    const std::string extension = SplitPath(ReadInput().Path()).extension;
    UpdateWindow(m_window);
    if (!ApplyRules(extension)) {
        RejectInput(kBrowseRejection);
    }
}

/// The memory block with the names is not freed: it may come from a program that frees it itself.
void CMainDialog::OnDropFiles(WPARAM drop) {
    if (m_converting) {
        return;  // a new input would enable buttons while a conversion runs
    }
    const SPathParts dropped = SplitPath(Utf8Of(FirstDroppedFile(reinterpret_cast<HDROP>(drop))));
    m_folder = WideOf(dropped.drive + dropped.folder);
    m_fileName = WideOf(dropped.name + dropped.extension);
    Item(IDC_FOLDER).SetText(m_folder);
    Item(IDC_FILE_NAME).SetText(m_fileName);
    const SPathParts input = SplitPath(ReadInput().Path());
    SetCurrentDirectoryW(WideOf(input.folder).c_str());
    m_scratchText = WideOf(input.extension);
    if (!ApplyRules(input.extension)) {
        RejectInput(kDropRejection);
        return;
    }
    Item(IDC_BROWSE).Enable(true);
    DragAcceptFiles(m_window, FALSE);
}

bool CMainDialog::ApplyRules(const std::string& extension) {
    const std::optional<ButtonStates> states = ButtonsFor(extension);
    if (states) {
        ShowStates(*states);
    }
    return states.has_value();
}

void CMainDialog::RejectInput(const wchar_t* text) {
    ShowMessage(m_window, text);
    Item(IDC_FILE_NAME).SetText(L"");
    ShowStates(ButtonsWithoutInput());
    DragAcceptFiles(m_window, TRUE);
}

void CMainDialog::ShowStates(const ButtonStates& states) {
    const HWND focus = GetFocus();
    for (const SControlState& state : states) {
        Item(state.controlId).Enable(state.enabled);
    }
    if (IsChild(m_window, focus) != FALSE) {
        LeaveGreyedControl(focus);
    }
}

void CMainDialog::OnFullPath() {
    CSelectFolderDialog dialog(Item(IDC_IML_PATH).Text(), m_window);
    if (dialog.DoModal() == IDOK) {
        // Without the separator, the export would take the last component for a file name and drop it.
        ShowImlPath(WideOf(WithSeparator(Utf8Of(dialog.FolderPath()))));
    }
}

void CMainDialog::OnRelativePath() {
    ShowImlPath(L"");
}

/// Long paths are shortened in the field, so the tooltip has the whole text.
void CMainDialog::ShowImlPath(const std::wstring& path) {
    const CWindow field = Item(IDC_IML_PATH);
    field.SetText(path);
    m_toolTip.RemoveTool(field.Handle());
    if (!path.empty()) {
        m_toolTip.AddTool(field.Handle(), path.c_str());
    }
}

}  // namespace vantrel
