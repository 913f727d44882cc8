// Icon buttons: they behave like the system's push buttons, and each state has its own appearance.
#include "app/ui/icon_button.h"

#include <commctrl.h>

#include <algorithm>

#include "resources/resource_ids.h"
#include "tests/window/controls/controls_dialog.h"

namespace vantrel::test {
namespace {

/// The largest difference between the colour channels of a pixel; 0 for greys.
std::uint32_t Colourfulness(std::uint32_t pixel) {
    const std::uint32_t channels[] = {pixel & 0xFF, pixel >> 8 & 0xFF, pixel >> 16 & 0xFF};
    return *std::max_element(std::begin(channels), std::end(channels)) -
           *std::min_element(std::begin(channels), std::end(channels));
}

int CountColourful(const std::vector<std::uint32_t>& picture) {
    return static_cast<int>(
        std::count_if(picture.begin(), picture.end(), [](std::uint32_t pixel) { return Colourfulness(pixel) > 60; }));
}

class CIconButtonTest : public CControlsDialog {
protected:
    CIconButtonTest() {
        m_first.Attach(Control(IDC_FIRST));
        m_second.Attach(Control(IDC_SECOND));
        for (CIconButton* button : {&m_first, &m_second}) {
            button->SetHoverCursor(&m_cursor);
            button->SetIcon(IDI_DAX_TO_ISO);
        }
        MoveFocus(IDC_SECOND);
    }

    /// Like the Tab key, which also moves the default button.
    void MoveFocus(int id) const {
        SendMessageW(m_dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(id)), TRUE);
        Pump();
    }

    LRESULT DialogCode(int id) const { return SendMessageW(Control(id), WM_GETDLGCODE, 0, 0); }

    CHoverCursor m_cursor;
    CIconButton m_first;
    CIconButton m_second;
};

TEST_F(CIconButtonTest, ReportsEveryKindOfClick) {
    SendMessageW(Control(IDC_SECOND), BM_CLICK, 0, 0);
    EXPECT_EQ(Clicks(IDC_SECOND), 1);
    Click(Control(IDC_SECOND));
    EXPECT_EQ(Clicks(IDC_SECOND), 2);
    Type(Control(IDC_SECOND), VK_SPACE);
    EXPECT_EQ(Clicks(IDC_SECOND), 3);
    Type(Control(IDC_SECOND), VK_RETURN);
    EXPECT_EQ(Clicks(IDC_SECOND), 4);
    EXPECT_EQ(Clicks(IDC_FIRST), 0);
}

TEST_F(CIconButtonTest, QuickSecondClickCountsAsAClick) {
    Click(Control(IDC_SECOND));
    SendMessageW(Control(IDC_SECOND), WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(5, 5));
    SendMessageW(Control(IDC_SECOND), WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    EXPECT_EQ(Clicks(IDC_SECOND), 2);
}

TEST_F(CIconButtonTest, GreyedButtonIgnoresClicks) {
    EnableWindow(Control(IDC_SECOND), FALSE);
    SendMessageW(Control(IDC_SECOND), BM_CLICK, 0, 0);
    EXPECT_EQ(Clicks(IDC_SECOND), 0);
}

TEST_F(CIconButtonTest, EnterElsewherePressesTheDefaultButton) {
    Type(m_dialog, VK_RETURN);
    EXPECT_EQ(Clicks(IDC_FIRST), 1);
}

TEST_F(CIconButtonTest, StaysTheDefaultButtonUntilAnotherOneTakesOver) {
    SendMessageW(m_dialog, DM_SETDEFID, IDC_FIRST, 0);
    EXPECT_NE(DialogCode(IDC_FIRST) & DLGC_DEFPUSHBUTTON, 0);
    EXPECT_EQ(DialogCode(IDC_SECOND) & DLGC_DEFPUSHBUTTON, 0);
    EXPECT_NE(DialogCode(IDC_SECOND) & DLGC_UNDEFPUSHBUTTON, 0);
    SendMessageW(m_dialog, DM_SETDEFID, IDC_SECOND, 0);
    EXPECT_EQ(DialogCode(IDC_FIRST) & DLGC_DEFPUSHBUTTON, 0);
    EXPECT_NE(DialogCode(IDC_SECOND) & DLGC_DEFPUSHBUTTON, 0);
}

TEST_F(CIconButtonTest, ShowsItsIconInColourAndGreyed) {
    const HWND button = Control(IDC_SECOND);
    m_second.SetIcon(0);
    const auto bare = Picture(button);
    m_second.SetIcon(IDI_DAX_TO_ISO);
    const auto normal = Picture(button);
    EXPECT_GT(CountColourful(normal), CountColourful(bare) + 100);
    EnableWindow(button, FALSE);
    const auto greyed = Picture(button);
    EXPECT_LT(CountColourful(greyed), 10);
    m_second.SetIcon(0);
    const auto greyedBare = Picture(button);
    // The greyed icon still has many shades.
    std::vector<std::uint32_t> shades;
    for (std::size_t i = 0; i < greyed.size(); ++i) {
        if (greyed[i] != greyedBare[i]) {
            shades.push_back(greyed[i]);
        }
    }
    std::sort(shades.begin(), shades.end());
    EXPECT_GT(std::unique(shades.begin(), shades.end()) - shades.begin(), 8);
}

TEST_F(CIconButtonTest, EachStateLooksDifferent) {
    const HWND button = Control(IDC_SECOND);
    SendMessageW(m_dialog, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    SetFocus(Control(IDC_FIRST));
    const auto normal = Picture(button);
    SendMessageW(button, BM_SETSTATE, TRUE, 0);
    const auto pressed = Picture(button);
    SendMessageW(button, BM_SETSTATE, FALSE, 0);
    EXPECT_EQ(Picture(button), normal);
    EXPECT_NE(pressed, normal);
    SetFocus(button);
    const auto focused = Picture(button);
    EXPECT_NE(focused, normal);
    SetFocus(Control(IDC_FIRST));
    EXPECT_EQ(Picture(button), normal);
}

TEST_F(CIconButtonTest, LooksHotUnderThePointerAndShowsTheHand) {
    MoveFocus(IDC_FIRST);
    const HWND button = Control(IDC_SECOND);
    const auto normal = Picture(button);
    RECT rectangle;
    GetWindowRect(button, &rectangle);
    SetCursorPos((rectangle.left + rectangle.right) / 2, (rectangle.top + rectangle.bottom) / 2);
    EXPECT_TRUE(WaitUntil([&] {
        Pump();
        return Picture(button) != normal;
    }));
    SendMessageW(button, WM_SETCURSOR, reinterpret_cast<WPARAM>(button), MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_HAND));
    SetCursorPos(0, 0);
    EXPECT_TRUE(WaitUntil([&] {
        Pump();
        return Picture(button) == normal;
    }));
}

TEST_F(CIconButtonTest, ReportsItsIdealSize) {
    SIZE ideal = {};
    ASSERT_NE(SendMessageW(Control(IDC_SECOND), BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&ideal)), 0);
    EXPECT_EQ(ideal.cx, m_second.IdealSize().cx);
    EXPECT_GT(ideal.cx, 16 + 4);
    EXPECT_GE(ideal.cy, 16);
    SetWindowTextW(Control(IDC_SECOND), L"a much longer text on this button");
    EXPECT_GT(m_second.IdealSize().cx, ideal.cx + 50);
}

/// The first column of a button that shows a colour of its icon.
int IconColumn(const std::vector<std::uint32_t>& picture, HWND button) {
    RECT client;
    GetClientRect(button, &client);
    const auto width = static_cast<std::size_t>(client.right);
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t i = x; i < picture.size(); i += width) {
            if (Colourfulness(picture[i]) > 60) {
                return static_cast<int>(x);
            }
        }
    }
    return -1;
}

TEST_F(CIconButtonTest, IconsOfAColumnLineUp) {
    MoveFocus(IDC_FIRST);
    const HWND button = Control(IDC_SECOND);
    SetWindowTextW(button, L"i");
    const int column = IconColumn(Picture(button), button);
    EXPECT_GT(column, 3);
    SetWindowTextW(button, L"a longer");
    EXPECT_EQ(IconColumn(Picture(button), button), column);
    SetWindowTextW(button, L"a text that is much too long");
    EXPECT_LT(IconColumn(Picture(button), button), column);
}

/// Sets the visual style of a window; two blanks stand for none.
void SetStyle(HWND window, const wchar_t* name) {
    const auto setWindowTheme = reinterpret_cast<HRESULT(WINAPI*)(HWND, const wchar_t*, const wchar_t*)>(
        reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"uxtheme.dll"), "SetWindowTheme")));
    setWindowTheme(window, name, name);
}

LRESULT CALLBACK SwallowThemeChange(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    return message == WM_THEMECHANGED ? 0 : DefSubclassProc(window, message, wParam, lParam);
}

TEST_F(CIconButtonTest, OpensItsVisualStyleAgainWhenItChangesAndOnADisplayOfAnotherScale) {
    constexpr UINT kDisplayChanged = 0x02E3;  // WM_DPICHANGED_AFTERPARENT
    constexpr UINT_PTR kSwallow = 99;
    const HWND button = Control(IDC_SECOND);
    MoveFocus(IDC_FIRST);
    for (const UINT message : {static_cast<UINT>(WM_THEMECHANGED), kDisplayChanged}) {
        SCOPED_TRACE(message);
        const auto themed = Picture(button);
        SetWindowSubclass(button, SwallowThemeChange, kSwallow, 0);
        SetStyle(button, L" ");
        Pump();
        RemoveWindowSubclass(button, SwallowThemeChange, kSwallow);
        EXPECT_EQ(Picture(button), themed) << "until the message arrives";
        SendMessageW(button, message, 0, 0);
        EXPECT_NE(Picture(button), themed);
        SetStyle(button, nullptr);
        Pump();
        EXPECT_EQ(Picture(button), themed);
    }
}

TEST_F(CIconButtonTest, UsesClassicDrawingWithoutAVisualStyle) {
    const HWND button = Control(IDC_SECOND);
    MoveFocus(IDC_FIRST);
    const auto themed = Picture(button);
    SetStyle(button, L" ");
    Pump();
    const auto classic = Picture(button);
    EXPECT_NE(classic, themed);
    EXPECT_GT(CountColourful(classic), 100) << "the icon is missing";
    SendMessageW(button, BM_SETSTATE, TRUE, 0);
    EXPECT_NE(Picture(button), classic);
    SendMessageW(button, BM_SETSTATE, FALSE, 0);
    SendMessageW(button, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
    const auto asDefault = Picture(button);
    EXPECT_NE(asDefault, classic);
    EXPECT_EQ(CountColourful(asDefault), CountColourful(classic)) << "the icon changed with the frame";
    EnableWindow(button, FALSE);
    EXPECT_LT(CountColourful(Picture(button)), 10);
}

TEST_F(CIconButtonTest, OutlivesItsWindow) {
    DestroyWindow(Control(IDC_SECOND));
    EXPECT_EQ(m_second.Window(), nullptr);
    m_second.SetIcon(IDI_DAX_TO_ISO);
}

TEST(ButtonIconSize, IsASizeOfTheIcons) {
    EXPECT_EQ(ButtonIconSize(200), 64);
    EXPECT_EQ(ButtonIconSize(48), 48);
    EXPECT_EQ(ButtonIconSize(47), 40);
    EXPECT_EQ(ButtonIconSize(39), 32);
    EXPECT_EQ(ButtonIconSize(31), 24);
    EXPECT_EQ(ButtonIconSize(16), 16);
    EXPECT_EQ(ButtonIconSize(3), 16);
    EXPECT_EQ(ButtonIconSize(-5), 16);
}

}  // namespace
}  // namespace vantrel::test
