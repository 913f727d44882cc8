// The dialogs of the shipped program, created from its templates with the program's controls: no control overlaps
// another one, and every text fits. The second header needs what the first one declares.
// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include "app/ui/icon_button.h"
#include "app/ui/scaling.h"
#include "app/ui/status_bar.h"
#include "files/utf.h"
#include "resources/resource_ids.h"

namespace vantrel::test {
namespace {

constexpr int kIconButtons[] = {IDC_BROWSE,        IDC_VANTREL,    IDC_EXIT,          IDC_ISO_TO_IML, IDC_ISO_TO_BIN,
                                IDC_BIN_TO_ISO,    IDC_FULL_PATH,  IDC_RELATIVE_PATH, IDC_ISO_TO_DAX, IDC_DAX_TO_ISO,
                                IDC_CHECK_POSTGAP, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO};
constexpr int kFirstIcon = IDI_BROWSE;  // all icons need the same space
constexpr int kCheckMark = 13;          // pixels at 100 %
constexpr int kTextGap = 3;

/// quorn_vantrel.exe beside this program.
std::wstring ShippedProgram() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path.substr(0, path.find_last_of(L'\\') + 1) + L"quorn_vantrel.exe";
}

INT_PTR CALLBACK NothingHandled(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

class CShippedDialog {
public:
    explicit CShippedDialog(int templateId)
        : m_program(LoadLibraryExW(ShippedProgram().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE)) {
        const HRSRC found = FindResourceW(m_program, MAKEINTRESOURCEW(templateId), RT_DIALOG);
        const auto* layout = static_cast<const DLGTEMPLATE*>(LockResource(LoadResource(m_program, found)));
        m_window = CreateDialogIndirectParamW(m_program, layout, nullptr, NothingHandled, 0);
    }
    ~CShippedDialog() {
        DestroyWindow(m_window);
        FreeLibrary(m_program);
    }
    CShippedDialog(const CShippedDialog&) = delete;
    CShippedDialog& operator=(const CShippedDialog&) = delete;

    HWND Window() const { return m_window; }

    std::vector<HWND> Controls() const {
        std::vector<HWND> controls;
        for (HWND control = GetWindow(m_window, GW_CHILD); control != nullptr;
             control = GetWindow(control, GW_HWNDNEXT)) {
            // Not IsWindowVisible, which is false for all controls because the dialog is hidden.
            if ((GetWindowLongPtrW(control, GWL_STYLE) & WS_VISIBLE) != 0) {
                controls.push_back(control);
            }
        }
        return controls;
    }

private:
    HMODULE m_program;
    HWND m_window;
};

RECT PlaceOf(HWND control) {
    RECT place;
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

std::wstring TextOf(HWND control) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::wstring ClassOf(HWND control) {
    std::wstring name(32, L'\0');
    name.resize(static_cast<std::size_t>(GetClassNameW(control, name.data(), static_cast<int>(name.size()))));
    return name;
}

LONG_PTR ButtonKind(HWND control) {
    return ClassOf(control) == L"Button" ? GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK : -1;
}

bool IsGroup(HWND control) {
    return ButtonKind(control) == BS_GROUPBOX;
}

std::string Describe(HWND control) {
    const RECT place = PlaceOf(control);
    return Utf8Of(ClassOf(control)) + " " + std::to_string(GetDlgCtrlID(control)) + " \"" + Utf8Of(TextOf(control)) +
           "\" at " + std::to_string(place.left) + ", " + std::to_string(place.top) + " to " +
           std::to_string(place.right) + ", " + std::to_string(place.bottom);
}

/// The size of a text in the font of a control. If `width` is not 0, lines are wrapped at `width` pixels.
SIZE Extent(HWND control, const std::wstring& text, int width = 0) {
    const HDC dc = GetDC(control);
    const HGDIOBJ former = SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0)));
    RECT extent = {0, 0, width, 0};
    DrawTextW(dc, text.c_str(), -1, &extent,
              DT_CALCRECT | DT_NOPREFIX | (width != 0 ? DT_WORDBREAK : static_cast<UINT>(DT_SINGLELINE)));
    SelectObject(dc, former);
    ReleaseDC(control, dc);
    return {extent.right, extent.bottom};
}

/// The size that a control needs for its text and the parts beside it.
SIZE RoomNeeded(HWND control) {
    const RECT place = PlaceOf(control);
    const std::wstring kind = ClassOf(control);
    const std::wstring text = TextOf(control);
    SIZE room = {};
    if (ButtonKind(control) == BS_OWNERDRAW || ButtonKind(control) == BS_PUSHBUTTON ||
        ButtonKind(control) == BS_DEFPUSHBUTTON) {
        SendMessageW(control, BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&room));
    } else if (IsGroup(control)) {
        room = Extent(control, text);
        room.cx += 2 * Scaled(control, 9);
    } else if (ButtonKind(control) == BS_AUTOCHECKBOX) {
        room = Extent(control, text);
        room.cx += Scaled(control, kCheckMark + kTextGap);
    } else if (kind == L"Static" && !text.empty()) {
        room = Extent(control, text, place.right - place.left);
    }
    return room;
}

void Furnish(const CShippedDialog& dialog, std::list<CIconButton>& buttons, CStatusBar& bar) {
    for (const int id : kIconButtons) {
        buttons.emplace_back();
        buttons.back().Attach(GetDlgItem(dialog.Window(), id));
        buttons.back().SetIcon(kFirstIcon);
    }
    bar.Create(dialog.Window());
    bar.SetPaneWidths({250, 100, 165});
    bar.Reposition();
}

void CheckPlaces(const CShippedDialog& dialog) {
    RECT client;
    GetClientRect(dialog.Window(), &client);
    const auto controls = dialog.Controls();
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const RECT place = PlaceOf(controls[i]);
        RECT joint;
        UnionRect(&joint, &place, &client);
        EXPECT_NE(EqualRect(&joint, &client), FALSE) << "outside the dialog: " << Describe(controls[i]);
        for (std::size_t j = i + 1; j < controls.size(); ++j) {
            const RECT other = PlaceOf(controls[j]);
            UnionRect(&joint, &place, &other);
            const bool isFramed = (IsGroup(controls[i]) && EqualRect(&joint, &place) != FALSE) ||
                                  (IsGroup(controls[j]) && EqualRect(&joint, &other) != FALSE);
            RECT common;
            EXPECT_TRUE(isFramed || IntersectRect(&common, &place, &other) == FALSE)
                << Describe(controls[i]) << "\noverlaps " << Describe(controls[j]);
        }
    }
}

void CheckRoom(const CShippedDialog& dialog) {
    for (const HWND control : dialog.Controls()) {
        const RECT place = PlaceOf(control);
        const SIZE room = RoomNeeded(control);
        EXPECT_LE(room.cx, place.right - place.left) << "too narrow: " << Describe(control);
        EXPECT_LE(room.cy, place.bottom - place.top) << "too low: " << Describe(control);
    }
}

TEST(Layout, NoControlsOfTheMainDialogOverlap) {
    const CShippedDialog dialog(IDD_MAIN);
    ASSERT_NE(dialog.Window(), nullptr);
    std::list<CIconButton> buttons;
    CStatusBar bar;
    Furnish(dialog, buttons, bar);
    EXPECT_GT(dialog.Controls().size(), 25U);
    CheckPlaces(dialog);
}

TEST(Layout, MainDialogHasRoomForEveryText) {
    const CShippedDialog dialog(IDD_MAIN);
    ASSERT_NE(dialog.Window(), nullptr);
    std::list<CIconButton> buttons;
    CStatusBar bar;
    Furnish(dialog, buttons, bar);
    CheckRoom(dialog);
}

TEST(Layout, ListsHaveRoomForTheirEntries) {
    const CShippedDialog dialog(IDD_MAIN);
    struct SEntry {
        int list;
        const wchar_t* text;
    };
    for (const SEntry& entry : {SEntry{IDC_COMPRESSION, L"9 slower but better compression"},
                                SEntry{IDC_SOUND, L"@No Sound Selected"}, SEntry{IDC_SOUND, L"Success.wav"}}) {
        const HWND list = GetDlgItem(dialog.Window(), entry.list);
        COMBOBOXINFO info = {};
        info.cbSize = sizeof info;
        ASSERT_NE(GetComboBoxInfo(list, &info), FALSE);
        EXPECT_LE(Extent(list, entry.text).cx, info.rcItem.right - info.rcItem.left) << Utf8Of(entry.text);
    }
}

TEST(Layout, StatusPanesHaveRoomForTheirTexts) {
    const CShippedDialog dialog(IDD_MAIN);
    std::list<CIconButton> buttons;
    CStatusBar bar;
    Furnish(dialog, buttons, bar);
    struct SPane {
        int index;
        const wchar_t* text;
    };
    for (const SPane& pane :
         {SPane{1, L"2147483648 bytes"}, SPane{2, L"STATUS"}, SPane{3, L"100%"}, SPane{3, L"PERCENT"}}) {
        RECT place;
        ASSERT_NE(
            SendMessageW(bar.Handle(), SB_GETRECT, static_cast<WPARAM>(pane.index), reinterpret_cast<LPARAM>(&place)),
            0);
        EXPECT_LE(Extent(bar.Handle(), pane.text).cx, place.right - place.left) << Utf8Of(pane.text);
    }
}

/// The status bar sets a text that is too long with up to one pixel less between characters.
TEST(Layout, StatusPanesHaveRoomForTheStartTexts) {
    constexpr int kMargin = 2;
    const CShippedDialog dialog(IDD_MAIN);
    std::list<CIconButton> buttons;
    CStatusBar bar;
    Furnish(dialog, buttons, bar);
    RECT place;
    ASSERT_NE(SendMessageW(bar.Handle(), SB_GETRECT, 2, reinterpret_cast<LPARAM>(&place)), 0);
    for (const std::wstring text : {L"Compression ISO2CSO, please Wait", L"DeCompression CSO2ISO, please Wait",
                                    L"Compression ISO2DAX, please Wait", L"Decompressing DAX2ISO, please Wait",
                                    L"Converting ISO2BIN, please Wait", L"Converting bin2iso, please Wait",
                                    L"Rebuilding ISO, please Wait", L"checking ISO postgap, please Wait"}) {
        const LONG squeezed = static_cast<LONG>(text.size()) * Scaled(bar.Handle(), 1);
        EXPECT_LE(Extent(bar.Handle(), text).cx - squeezed, place.right - place.left - Scaled(bar.Handle(), kMargin))
            << Utf8Of(text);
    }
}

TEST(Layout, AboutBoxHasRoomForEveryText) {
    const CShippedDialog dialog(IDD_ABOUT);
    ASSERT_NE(dialog.Window(), nullptr);
    EXPECT_GE(dialog.Controls().size(), 7U);
    CheckPlaces(dialog);
    CheckRoom(dialog);
}

}  // namespace
}  // namespace vantrel::test
