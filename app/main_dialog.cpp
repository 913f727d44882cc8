#include "app/main_dialog.h"

#include <commctrl.h>
#include <shellapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "app/folder_pattern.h"
#include "app/resource_file.h"
#include "app/ui/accessible_name.h"
#include "app/ui/field_frame.h"
#include "files/native_file.h"
#include "files/path.h"
#include "files/utf.h"
#include "resources/resource_ids.h"

namespace vantrel {
namespace {

/// Tells that the close box has been pressed during a conversion.
constexpr wchar_t kClosingCaption[] = L"quorn_vantrel_v5.0 - closes after this conversion";

constexpr COLORREF kStatusBarGrey = RGB(180, 180, 180);

constexpr const wchar_t* kLevelEntries[] = {
    L"1  Default", L"2", L"3", L"4", L"5", L"6", L"7", L"8", L"9 slower but better compression"};
/// The entry that is selected at the start, deliberately not the one that is called the default.
constexpr int kFirstLevelIndex = 8;
/// Entry 0 selects no sound.
constexpr int kFirstSoundIndex = 1;

/// The order in which the tooltips are added.
constexpr int kToolTipOrder[] = {IDC_ISO_TO_IML, IDC_VANTREL,       IDC_ISO_TO_BIN, IDC_BIN_TO_ISO,
                                 IDC_ISO_TO_DAX, IDC_DAX_TO_ISO,    IDC_FULL_PATH,  IDC_RELATIVE_PATH,
                                 IDC_BROWSE,     IDC_CHECK_POSTGAP, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO};

}  // namespace

constexpr CMainDialog::SCommand CMainDialog::kCommands[] = {
    {IDC_BROWSE, &CMainDialog::OnBrowse, IDI_BROWSE, L"Open an Image File"},
    {IDC_VANTREL, &CMainDialog::OnVantrel, IDI_VANTREL, L"vantrel"},
    {IDC_EXIT, &CMainDialog::OnExit, IDI_EXIT},
    {IDC_ISO_TO_IML, &CMainDialog::OnIsoToIml, IDI_ISO_TO_IML, L"iso2iml"},
    {IDC_ISO_TO_BIN, &CMainDialog::OnIsoToBin, IDI_ISO_TO_BIN, L"iso2bin"},
    {IDC_BIN_TO_ISO, &CMainDialog::OnBinToIso, IDI_BIN_TO_ISO, L"bin2iso"},
    {IDC_FULL_PATH, &CMainDialog::OnFullPath, IDI_FULL_PATH, L"\"\\Game_Folder\\SYSTEM.CNF\""},
    {IDC_RELATIVE_PATH, &CMainDialog::OnRelativePath, IDI_RELATIVE_PATH, L"\"SYSTEM.CNF\""},
    {IDC_ISO_TO_DAX, &CMainDialog::OnIsoToDax, IDI_ISO_TO_DAX, L"iso2dax"},
    {IDC_DAX_TO_ISO, &CMainDialog::OnDaxToIso, IDI_DAX_TO_ISO, L"dax2iso"},
    {IDC_CHECK_POSTGAP, &CMainDialog::OnCheckPostgap, IDI_CHECK_POSTGAP,
     L"Write a 150 block postgap at the end of the track"},
    {IDC_ISO_TO_CSO, &CMainDialog::OnIsoToCso, IDI_ISO_TO_CSO, L"iso2cso"},
    {IDC_CSO_TO_ISO, &CMainDialog::OnCsoToIso, IDI_CSO_TO_ISO, L"cso2iso"},
    {IDC_ADD_POSTGAP, &CMainDialog::OnAddSelectivePostgap},
    {IDC_EFFECT, &CMainDialog::OnEffect},
    {IDC_ALWAYS_ON_TOP, &CMainDialog::OnAlwaysOnTop},
    {IDC_SOUND, &CMainDialog::OnSoundChange, 0, nullptr, CBN_SELCHANGE},
};

CMainDialog::CMainDialog(CMessageLoop& loop)
    : CDialog(IDD_MAIN), m_loop(loop), m_hIcon(LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MAIN_ICON))) {}

bool CMainDialog::PreTranslateMessage(MSG& message) {
    m_toolTip.RelayEvent(message);
    // Esc means Exit, which would abort the conversion.
    if (m_converting && message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE) {
        return true;
    }
    return CDialog::PreTranslateMessage(message);
}

LRESULT CMainDialog::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            OnCreate();
            break;
        case WM_INITDIALOG:
            OnInitDialog();
            return TRUE;
        case WM_COMMAND:
            if (OnCommand(LOWORD(wParam), HIWORD(wParam))) {
                return 0;
            }
            break;
        case WM_SIZE:
        case WM_DPICHANGED: {
            const LRESULT result = Default(message, wParam, lParam);
            if (m_statusBar.Exists()) {
                m_statusBar.Reposition();
            }
            return result;
        }
        case WM_ACTIVATE: {
            const LRESULT result = Default(message, wParam, lParam);
            // A minimised window gets back its focus when it is restored.
            if (LOWORD(wParam) != WA_INACTIVE && HIWORD(wParam) == 0) {
                LeaveGreyedControl(GetFocus());
            }
            return result;
        }
        case WM_DROPFILES:
            OnDropFiles(wParam);
            return 0;
        case WM_SYSCOMMAND:
            if (OnSysCommand(wParam)) {
                return 0;
            }
            break;
        case WM_PAINT:
            if (OnPaint()) {
                return 0;
            }
            break;
        case WM_QUERYDRAGICON:
            return reinterpret_cast<LRESULT>(OnQueryDragIcon());
        case WM_TIMER:
            if (OnTimer(wParam)) {
                return 0;
            }
            break;
        case WM_MOUSEMOVE:
            OnMouseMove(lParam);
            break;
        case WM_LBUTTONDOWN:
            OnLButtonDown(lParam);
            break;
        case WM_CLOSE:
            OnClose();
            return 0;
        default:
            break;
    }
    return Default(message, wParam, lParam);
}

bool CMainDialog::OnCommand(int controlId, int notification) {
    const auto* const command = std::ranges::find(kCommands, controlId, &SCommand::controlId);
    if (command == std::end(kCommands) || command->notification != notification) {
        return false;
    }
    (this->*command->handler)();
    return true;
}

const CMainDialog::SCommand& CMainDialog::CommandOf(int controlId) {
    return *std::ranges::find(kCommands, controlId, &SCommand::controlId);
}

void CMainDialog::OnInitDialog() {
    m_compressionCombo.Attach(Item(IDC_COMPRESSION).Handle());
    m_soundCombo.Attach(Item(IDC_SOUND).Handle());
    m_effectCheck.Attach(Item(IDC_EFFECT).Handle());
    m_topMostCheck.Attach(Item(IDC_ALWAYS_ON_TOP).Handle());
    m_statusText.Attach(Item(IDC_STATUS_LINE).Handle());
    m_soundCombo.Add(StringResource(IDS_NO_SOUND));
    for (const wchar_t* entry : kLevelEntries) {
        m_compressionCombo.Add(entry);
    }

    AddAboutItem();
    Send(WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(m_hIcon));
    Send(WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(m_hIcon));
    CreateStatusBar();
    TakeWorkFolder();
    std::wstring soundPath;
    WriteResourceFile(L"Success.wav", L"BIN", IDR_DEFAULT_SOUND, soundPath);
    SetWindowPos(m_window, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    m_effect.SetPicture(IDB_EFFECT_PICTURE, kEffectWidth, kEffectHeight);
    m_topMostCheck.SetState(BST_UNCHECKED);
    m_effectFlag = 1;  // deliberately, although the box is not checked
    m_effectCheck.SetState(BST_UNCHECKED);
    AttachIconButtons();
    AttachFieldFrame(Item(IDC_IML_PATH).Handle());
    SetAccessibleNames();
    CreateToolTips();
    ShowStates(ButtonsWithoutInput());
    DragAcceptFiles(m_window, TRUE);
    FillSoundList();
    m_compressionCombo.Select(kFirstLevelIndex);
}

void CMainDialog::AddAboutItem() {
    const HMENU menu = GetSystemMenu(m_window, FALSE);
    const std::wstring text = StringResource(IDS_ABOUT);
    if (menu != nullptr && !text.empty()) {
        AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
        AppendMenuW(menu, MF_STRING, IDM_ABOUTBOX, text.c_str());
    }
}

void CMainDialog::CreateStatusBar() {
    m_statusBar.Create(m_window);
    m_statusBar.SetIndicators({IDS_PANE_FILE, IDS_PANE_BYTES, IDS_PANE_STATUS, IDS_PANE_PERCENT});
    m_statusBar.SetPaneWidths({250, 100, 165});
    m_statusBar.SetBackground(kStatusBarGrey);
    m_statusBar.Reposition();
    for (int pane = 0; pane < CStatusBar::kPaneCount; ++pane) {
        m_statusBar.SetPaneText(pane, L"");
    }
    m_statusBar.PaintNow();
}

void CMainDialog::TakeWorkFolder() {
    const std::string current = CurrentFolder();
    if (current.empty()) {
        std::perror("_getcwd error");
    }
    const std::string folder = WithSeparator(current);
    m_folder = WideOf(folder);
    Item(IDC_FOLDER).SetText(m_folder);
    Item(IDC_FILE_NAME).SetText(L"");
    m_workFolder = WideOf(ExpandAsPattern(folder));
}

void CMainDialog::AttachIconButtons() {
    constexpr auto hasIcon = [](const SCommand& command) { return command.iconId != 0; };
    static_assert(std::ranges::count_if(kCommands, hasIcon) == kIconButtonCount);
    auto button = m_iconButtons.begin();
    for (const SCommand& command : kCommands) {
        if (hasIcon(command)) {
            button->Attach(Item(command.controlId).Handle());
            button->SetHoverCursor(&m_buttonCursor);
            button->SetIcon(command.iconId);
            ++button;
        }
    }
}

/// Moves the keyboard focus from a greyed control, which ignores all keys, to the next one in the tab order after
/// `former`, which has or had the focus. While another program is active, this waits until the window becomes active.
void CMainDialog::LeaveGreyedControl(HWND former) {
    const HWND focus = GetFocus();
    if (focus == nullptr || focus == m_window || IsWindowEnabled(focus) == FALSE) {
        const HWND next = GetNextDlgTabItem(m_window, former == m_window ? nullptr : former, FALSE);
        Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
    }
}

/// Names the controls that have no text of their own, or a text that means nothing without its group box.
void CMainDialog::SetAccessibleNames() {
    SetAccessibleName(Item(IDC_BROWSE).Handle(), CommandOf(IDC_BROWSE).toolTip);
    SetAccessibleName(Item(IDC_FOLDER).Handle(), L"Folder Path");
    SetAccessibleName(Item(IDC_FILE_NAME).Handle(), L"IML/ISO File");
    SetAccessibleName(Item(IDC_COMPRESSION).Handle(), L"DAX/CSO Compression Level");
    SetAccessibleName(Item(IDC_SOUND).Handle(), L"Sound Options");
}

void CMainDialog::CreateToolTips() {
    m_toolTip.Create(m_window);
    for (const int controlId : kToolTipOrder) {
        m_toolTip.AddTool(Item(controlId).Handle(), CommandOf(controlId).toolTip);
    }
}

void CMainDialog::FillSoundList() {
    m_scratchText = StringResource(IDS_NO_SOUND);
    m_soundCombo.Send(CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(m_scratchText.c_str()));
    AddSoundEntries();
    m_soundCombo.Select(m_soundCombo.Count());
    m_soundCombo.Select(kFirstSoundIndex);
}

/// Adds the WAV files of the current folder and, in brackets, its sub-folders. The entry without a sound is moved back
/// to the top, because the sorted list may place other entries before it.
void CMainDialog::AddSoundEntries() {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(L"*", &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    constexpr DWORD kUnlisted = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    do {
        const std::wstring name = found.cFileName;
        const std::wstring extension = name.size() > 4 ? name.substr(name.size() - 4) : std::wstring();
        if ((found.dwFileAttributes & kUnlisted) != 0 || name == L"." || name == L"..") {
            continue;
        }
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            m_soundCombo.Add(L"[" + name + L"]");
        } else if (lstrcmpiW(extension.c_str(), L".wav") == 0) {
            m_soundCombo.Add(name);
        }
    } while (FindNextFileW(search, &found) != FALSE);
    FindClose(search);

    const LRESULT noSound =
        m_soundCombo.Send(CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(m_scratchText.c_str()));
    if (noSound > 0) {
        m_soundCombo.Send(CB_DELETESTRING, static_cast<WPARAM>(noSound));
        m_soundCombo.Send(CB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(m_scratchText.c_str()));
    }
}

void CMainDialog::OnExit() {
    PlayClosingAnimation();
    PostQuitMessage(0);
    std::exit(0);
}

/// The dialog manager would press Exit, which ends the process at once. This lets a running conversion finish first.
void CMainDialog::OnClose() {
    if (m_converting) {
        SetText(kClosingCaption);
    }
    PlayClosingAnimation();
    PostQuitMessage(0);
}

void CMainDialog::OnSoundChange() {
    SetCurrentDirectoryW(m_workFolder.c_str());
    UpdateData();
    m_soundCombo.Select(m_soundCombo.Count());
}

void CMainDialog::UpdateData() {
    m_fileName = Item(IDC_FILE_NAME).Text();
    m_folder = Item(IDC_FOLDER).Text();
    m_soundIndex = m_soundCombo.Selection();
    m_compressionIndex = m_compressionCombo.Selection();
}

}  // namespace vantrel
