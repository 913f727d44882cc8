// Link labels and the opening of their targets. The tests register a protocol whose program records its arguments.
#include "app/ui/link_label.h"

#include <shellapi.h>

#include "app/ui/hyperlink.h"
#include "files/utf.h"
#include "tests/support/test_folder.h"
#include "tests/window/controls/controls_dialog.h"
#include "tests/window/driver/registered_class.h"

namespace vantrel::test {
namespace {

constexpr wchar_t kProtocol[] = L"vantreltest";

/// How often a target has been opened since the start of the test.
int g_opened = 0;

HINSTANCE WINAPI CountOpened(HWND owner, const wchar_t* verb, const wchar_t* file, const wchar_t* parameters,
                             const wchar_t* folder, INT show) {
    ++g_opened;
    const auto shellExecute = reinterpret_cast<decltype(&ShellExecuteW)>(
        reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"shell32.dll"), "ShellExecuteW")));
    return shellExecute(owner, verb, file, parameters, folder, show);
}

class CLinkLabelTest : public CControlsDialog {
protected:
    CLinkLabelTest() : m_note(WideOf(m_folder / "note.txt")) {
        m_link.Attach(Control(IDC_LINK));
        m_link.SetTarget(std::wstring(kProtocol) + L":some-place");
        m_link.SetHoverCursor(&m_cursor);
        g_opened = 0;
    }

    std::wstring NotingCommand() const { return L"cmd.exe /c echo %1>" + m_note; }

    bool IsNoted() const {
        return WaitUntil([this] { return GetFileAttributesW(m_note.c_str()) != INVALID_FILE_ATTRIBUTES; });
    }

    CTestFolder m_folder;
    std::wstring m_note;
    CHoverCursor m_cursor;
    CLinkLabel m_link;
};

TEST_F(CLinkLabelTest, ClickOpensTheTarget) {
    const CRegisteredClass protocol(kProtocol, L"URL:test", NotingCommand());
    Click(Control(IDC_LINK));
    ASSERT_TRUE(IsNoted());
    ASSERT_TRUE(WaitUntil([this] { return ReadWhole(m_folder / "note.txt").size() > 10; }));
    EXPECT_EQ(g_opened, 1);
    const auto note = ReadWhole(m_folder / "note.txt");
    EXPECT_NE(std::string(note.begin(), note.end()).find("vantreltest:some-place"), std::string::npos);
}

TEST_F(CLinkLabelTest, EnterAndSpaceOpenTheTarget) {
    for (const WPARAM key : {VK_RETURN, VK_SPACE}) {
        const CRegisteredClass protocol(kProtocol, L"URL:test", NotingCommand());
        DeleteFileW(m_note.c_str());
        Type(Control(IDC_LINK), key);
        EXPECT_TRUE(IsNoted()) << key;
    }
    EXPECT_EQ(Clicks(IDC_FIRST), 0) << "Enter went to the default button";
}

TEST_F(CLinkLabelTest, ReleaseOutsideOpensNothing) {
    const CRegisteredClass protocol(kProtocol, L"URL:test", NotingCommand());
    SendMessageW(Control(IDC_LINK), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    SendMessageW(Control(IDC_LINK), WM_LBUTTONUP, 0, MAKELPARAM(-5, 5));
    EXPECT_EQ(g_opened, 0);
}

TEST_F(CLinkLabelTest, IsAsWideAsItsText) {
    const auto width = [this] {
        RECT client;
        GetClientRect(Control(IDC_LINK), &client);
        return client.right;
    };
    const LONG ofShortText = width();
    EXPECT_LT(ofShortText, 60) << "the label of the template is wider";
    SetWindowTextW(Control(IDC_LINK), L"a link with a longer text");
    EXPECT_GT(width(), 2 * ofShortText);
}

TEST_F(CLinkLabelTest, CapturesTheMouseWhilePressed) {
    const CRegisteredClass protocol(kProtocol, L"URL:test", NotingCommand());
    SendMessageW(Control(IDC_LINK), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    EXPECT_EQ(GetCapture(), Control(IDC_LINK));
    SendMessageW(Control(IDC_LINK), WM_LBUTTONUP, 0, MAKELPARAM(-5, 5));
    EXPECT_EQ(GetCapture(), nullptr);
    SendMessageW(Control(IDC_LINK), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 5));
    ReleaseCapture();  // as when another window takes it
    SendMessageW(Control(IDC_LINK), WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    EXPECT_EQ(g_opened, 0);
}

TEST_F(CLinkLabelTest, IsATabStop) {
    // The window manager may give the dialog the focus again at any time.
    EXPECT_TRUE(WaitUntil([this] {
        Type(Control(IDC_SECOND), VK_TAB);
        return GetFocus() == Control(IDC_LINK);
    }));
}

TEST_F(CLinkLabelTest, ShowsTheFocusAndTheHand) {
    SendMessageW(m_dialog, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS), 0);
    SetFocus(Control(IDC_FIRST));
    const auto plain = Picture(Control(IDC_LINK));
    SetFocus(Control(IDC_LINK));
    EXPECT_NE(Picture(Control(IDC_LINK)), plain);
    SendMessageW(Control(IDC_LINK), WM_SETCURSOR, reinterpret_cast<WPARAM>(Control(IDC_LINK)),
                 MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_HAND));
}

TEST_F(CLinkLabelTest, ContrastsWithItsBackground) {
    const auto brightness = [](std::uint32_t pixel) {
        return static_cast<int>((pixel >> 16 & 0xFF) * 77 + (pixel >> 8 & 0xFF) * 150 + (pixel & 0xFF) * 29) >> 8;
    };
    const auto picture = Picture(Control(IDC_LINK));
    const int ground = brightness(picture.back());
    int farthest = 0;
    for (const std::uint32_t pixel : picture) {
        farthest = std::max(farthest, std::abs(brightness(pixel) - ground));
    }
    EXPECT_GE(farthest, 80);
}

TEST_F(CLinkLabelTest, FallsBackToTheProgramOfHtmFiles) {
    const CRegisteredClass kind(L".htm", L"vantreltestpage", L"");
    const CRegisteredClass page(L"vantreltestpage", L"page", NotingCommand());
    EXPECT_EQ(BrowserCommand(), NotingCommand());
    EXPECT_EQ(OpenTarget(m_dialog, L"unknownprotocol:some-place"), L"");
    EXPECT_TRUE(IsNoted());
}

TEST_F(CLinkLabelTest, ReportsFailures) {
    const CRegisteredClass kind(L".htm", L"vantrelnosuchclass", L"");
    EXPECT_EQ(BrowserCommand(), L"");
    const std::wstring failure = OpenTarget(m_dialog, L"unknownprotocol:some-place");
    ASSERT_NE(failure, L"");
    EXPECT_EQ(failure.find_last_not_of(L"\r\n "), failure.size() - 1) << "a line break at the end";
    m_link.SetTarget(L"unknownprotocol:some-place");
    static std::wstring shown;
    SetTimer(m_dialog, 1, 100, [](HWND dialog, UINT, UINT_PTR timer, DWORD) {
        const HWND box = GetLastActivePopup(dialog);
        if (box != dialog) {
            KillTimer(dialog, timer);
            shown.resize(300);
            shown.resize(static_cast<std::size_t>(GetDlgItemTextW(box, 0xFFFF, shown.data(), 300)));
            PostMessageW(box, WM_COMMAND, IDCANCEL, 0);
            PostMessageW(box, WM_COMMAND, IDOK, 0);
        }
    });
    Click(Control(IDC_LINK));
    EXPECT_EQ(shown, L"Unable to open hyperlink:\n\n" + failure);
}

TEST(Hyperlink, InsertsTheTargetIntoTheCommand) {
    EXPECT_EQ(CommandLineFor(L"\"C:\\b r.exe\" -url \"%1\" -new", L"https://a"),
              L"\"C:\\b r.exe\" -url \"https://a\" -new");
    EXPECT_EQ(CommandLineFor(L"b.exe %1", L"https://a"), L"b.exe https://a");
    EXPECT_EQ(CommandLineFor(L"b.exe", L"https://a"), L"b.exe \"https://a\"");
}

}  // namespace
}  // namespace vantrel::test

// Links call ShellExecute through this pointer, which the import library would define.
extern "C" {
extern const decltype(&ShellExecuteW) __imp_ShellExecuteW;
const decltype(&ShellExecuteW) __imp_ShellExecuteW = vantrel::test::CountOpened;
}
