// The main dialog as a window: position, Always On Top, the title effect, the About box, ending the program, the
// minimised icon and the keyboard.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "app/resource_file.h"
#include "app/ui/about_box.h"
#include "app/ui/memory_bitmap.h"
#include "files/utf.h"
#include "tests/window/driver/registered_class.h"
#include "tests/window/driver/window_query.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

constexpr UINT_PTR kEffectTimer = 1971;
constexpr int kOffsetOfEffect = 5;
constexpr int kLowestRowOfEffect = 80;
constexpr int kPictureWidth = 575;
constexpr int kPictureHeight = 330;

/// The client area of a window as shown on the screen.
class CClientPicture {
public:
    explicit CClientPicture(HWND window) {
        RECT client;
        GetClientRect(window, &client);
        POINT corner = {0, 0};
        ClientToScreen(window, &corner);
        m_width = client.right;
        const CMemoryBitmap bitmap(client.right, client.bottom);
        const HDC screen = GetDC(nullptr);
        BitBlt(bitmap.Dc(), 0, 0, client.right, client.bottom, screen, corner.x, corner.y, SRCCOPY);
        ReleaseDC(nullptr, screen);
        GdiFlush();
        m_pixels.assign(bitmap.Pixels(), bitmap.Pixels() + client.right * client.bottom);
    }

    COLORREF At(int x, int y) const { return m_pixels[static_cast<std::size_t>(y * m_width + x)] & 0xFFFFFF; }
    bool operator==(const CClientPicture& other) const { return m_pixels == other.m_pixels; }

private:
    int m_width = 0;
    std::vector<std::uint32_t> m_pixels;
};

/// The picture of the effect from the program's resources.
class CEffectPicture {
public:
    explicit CEffectPicture(const std::string& program) {
        const HMODULE module = LoadLibraryExW(WideOf(program).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        const HANDLE picture =
            LoadImageW(module, MAKEINTRESOURCEW(IDB_EFFECT_PICTURE), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION);
        BITMAP facts = {};
        GetObjectW(picture, sizeof facts, &facts);
        m_width = facts.bmWidth;
        m_height = facts.bmHeight;
        const HDC source = CreateCompatibleDC(nullptr);
        const HGDIOBJ former = SelectObject(source, picture);
        BitBlt(m_bitmap.Dc(), 0, 0, kPictureWidth, kPictureHeight, source, 0, 0, SRCCOPY);
        SelectObject(source, former);
        DeleteDC(source);
        DeleteObject(picture);
        FreeLibrary(module);
        GdiFlush();
    }

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    /// The colour of point (x, y) of the client area while the water is at rest.
    COLORREF UnderClientPoint(int x, int y) const {
        const int row = kPictureHeight - 1 - (kLowestRowOfEffect - y);
        return m_bitmap.Pixels()[row * kPictureWidth + x - kOffsetOfEffect] & 0xFFFFFF;
    }

private:
    CMemoryBitmap m_bitmap{kPictureWidth, kPictureHeight};
    int m_width = 0;
    int m_height = 0;
};

/// The picture, once many in a row are equal.
CClientPicture SettledPicture(HWND window) {
    constexpr int kEnough = 15;
    CClientPicture last(window);
    int equal = 0;
    Require("settled window", [&] {
        CClientPicture now(window);
        equal = now == last ? equal + 1 : 0;
        std::swap(last, now);
        return equal >= kEnough;
    });
    return last;
}

/// The control with the focus in a window of another program.
HWND FocusOf(HWND dialog) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(dialog, nullptr), &info);
    return info.hwndFocus;
}

class CWindowBehaviour : public CWindowTest {
protected:
    HWND WaitForWindow(const std::wstring& caption) const {
        HWND found = nullptr;
        Require("window " + Utf8Of(caption), [&] {
            // Without a message, because other windows of the program may disappear meanwhile.
            found = FindWindowOf(m_program.ProcessId(), [&](HWND window) {
                std::array<wchar_t, 64> text = {};
                InternalGetWindowText(window, text.data(), static_cast<int>(text.size()));
                return text.data() == caption;
            });
            return found != nullptr;
        });
        return found;
    }

    HWND OpenAboutBox(const CDrivenDialog& dialog, WPARAM command) const {
        PostMessageW(dialog.Window(), WM_SYSCOMMAND, command, 0);
        return WaitForWindow(L"About quorn_vantrel_v5.0");
    }

    static std::vector<std::string> TextsOf(HWND window) {
        std::vector<std::string> texts;
        for (const HWND child : ChildrenOf(window)) {
            texts.push_back(TextOf(child));
        }
        return texts;
    }

    /// The text written by the program that a link started.
    static std::string Note(const std::string& path) {
        Require("note", [&] {
            return GetFileAttributesW(WideOf(path).c_str()) != INVALID_FILE_ATTRIBUTES && ReadWhole(path).size() > 5;
        });
        const auto bytes = ReadWhole(path);
        return {bytes.begin(), bytes.end()};
    }
};

TEST_F(CWindowBehaviour, OpensInTheMiddleOfTheScreen) {
    const CDrivenDialog dialog = m_program.Start();
    const RECT rectangle = dialog.ScreenRectangle();
    EXPECT_EQ(rectangle.left, GetSystemMetrics(SM_CXSCREEN) / 2 - (rectangle.right - rectangle.left) / 2);
    EXPECT_EQ(rectangle.top, GetSystemMetrics(SM_CYSCREEN) / 2 - (rectangle.bottom - rectangle.top) / 2);
}

TEST_F(CWindowBehaviour, StaysOnTopWhileTheBoxIsChecked) {
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_FALSE(dialog.IsTopMost());
    dialog.PressAndWait(IDC_ALWAYS_ON_TOP);
    EXPECT_TRUE(dialog.IsChecked(IDC_ALWAYS_ON_TOP));
    EXPECT_TRUE(WaitUntil([&] { return dialog.IsTopMost(); }));
    dialog.PressAndWait(IDC_ALWAYS_ON_TOP);
    EXPECT_FALSE(dialog.IsChecked(IDC_ALWAYS_ON_TOP));
    EXPECT_TRUE(WaitUntil([&] { return !dialog.IsTopMost(); }));
}

TEST_F(CWindowBehaviour, EffectBoxCannotBeReached) {
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_FALSE(dialog.IsVisible(IDC_EFFECT));
    EXPECT_FALSE(dialog.IsEnabled(IDC_EFFECT));
    EXPECT_FALSE(dialog.IsChecked(IDC_EFFECT));
}

TEST_F(CWindowBehaviour, EffectShowsThePictureUnderWater) {
    const CDrivenDialog dialog = m_program.Start();
    const CEffectPicture picture(m_program.Folder() + "quorn_vantrel.exe");
    ASSERT_EQ(picture.Width(), kPictureWidth);
    ASSERT_EQ(picture.Height(), kPictureHeight);
    constexpr int kX = 300;
    constexpr int kY = 4;  // between the title and the first group box
    const CClientPicture before = SettledPicture(dialog.Window());
    ASSERT_NE(before.At(kX, kY), picture.UnderClientPoint(kX, kY));

    // The check box is hidden and greyed, but its command works.
    Ask(dialog.Window(), WM_COMMAND, MAKEWPARAM(IDC_EFFECT, BN_CLICKED),
        reinterpret_cast<LPARAM>(dialog.Control(IDC_EFFECT)));
    const auto isStill = [&] {
        const CClientPicture now(dialog.Window());
        for (int x = kX - 20; x < kX + 20; ++x) {
            if (now.At(x, kY) != picture.UnderClientPoint(x, kY)) {
                return false;
            }
        }
        return true;
    };
    Require("picture of the effect", isStill);
    Ask(dialog.Window(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(kX, kY));
    Require("ripples of a click", [&] { return !isStill(); });
    Require("rest after a click", isStill);
    Ask(dialog.Window(), WM_MOUSEMOVE, 0, MAKELPARAM(kX, kY));
    Require("ripples of a move", [&] { return !isStill(); });
    Require("rest after a move", isStill);
}

TEST_F(CWindowBehaviour, EffectIsDrivenByItsTimerAlone) {
    const CDrivenDialog dialog = m_program.Start();
    const CClientPicture before = SettledPicture(dialog.Window());
    Ask(dialog.Window(), WM_TIMER, 4711);
    EXPECT_TRUE(SettledPicture(dialog.Window()) == before);
    Ask(dialog.Window(), WM_TIMER, kEffectTimer);
    EXPECT_FALSE(SettledPicture(dialog.Window()) == before);
}

TEST_F(CWindowBehaviour, SystemMenuOpensTheAboutBox) {
    const CDrivenDialog dialog = m_program.Start();
    for (const WPARAM command : {IDM_ABOUTBOX, IDM_ABOUTBOX + 5}) {
        const HWND about = OpenAboutBox(dialog, command);
        EXPECT_FALSE(IsWindowEnabled(dialog.Window())) << "the box is not modal";
        PressButton(GetDlgItem(about, IDOK));
        Require("end of the About box", [&] { return IsWindow(about) == FALSE; });
        EXPECT_TRUE(IsWindowEnabled(dialog.Window()));
    }
}

/// The menu of another process cannot be read but operated: the Up key selects its last item.
TEST_F(CWindowBehaviour, SystemMenuEndsInTheAboutItem) {
    const CDrivenDialog dialog = m_program.Start();
    const auto isInMenu = [&] {
        GUITHREADINFO info = {};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(dialog.Window(), nullptr), &info);
        return (info.flags & GUI_INMENUMODE) != 0;
    };
    const auto hasAbout = [] { return FindWindowW(nullptr, L"About quorn_vantrel_v5.0") != nullptr; };
    // The window manager may activate the window at any time, which closes the menu.
    constexpr int kTries = 5;
    for (int i = 0; i < kTries && !hasAbout(); ++i) {
        PostMessageW(dialog.Window(), WM_SYSCOMMAND, SC_KEYMENU, L' ');
        Require("open system menu", [&] { return isInMenu() || hasAbout(); });
        PostMessageW(dialog.Window(), WM_KEYDOWN, VK_UP, 1);
        if (isInMenu()) {  // else the Enter key would press the default button
            PostMessageW(dialog.Window(), WM_KEYDOWN, VK_RETURN, 1);
        }
        WaitUntil(hasAbout);
    }
    EXPECT_TRUE(hasAbout());
}

TEST_F(CWindowBehaviour, OtherSystemCommandsHaveTheirDefaultEffect) {
    const CDrivenDialog dialog = m_program.Start();
    Ask(dialog.Window(), WM_SYSCOMMAND, SC_MINIMIZE);
    EXPECT_TRUE(WaitUntil([&] { return IsIconic(dialog.Window()) != FALSE; }));
}

TEST_F(CWindowBehaviour, AboutBoxShowsNameAndGreetings) {
    const CDrivenDialog dialog = m_program.Start();
    const HWND about = OpenAboutBox(dialog, IDM_ABOUTBOX);
    const auto texts = TextsOf(about);
    const auto has = [&](const std::string& text) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    };
    EXPECT_TRUE(has("quorn_vantrel_v5.0"));
    EXPECT_TRUE(has("OK"));
    EXPECT_TRUE(has("Greetings"));
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [](const std::string& text) {
        return text.find("Thanks") != std::string::npos &&
               text.find("DAX compression and decompression code") != std::string::npos;
    }));
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [](const std::string& text) { return text.empty(); }) ||
                Ask(ChildrenOf(about).front(), STM_GETICON) != 0);
    Ask(about, WM_CLOSE);
    Require("end of the About box", [&] { return IsWindow(about) == FALSE; });
    EXPECT_TRUE(m_program.IsRunning());
}

RECT ScreenPlace(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

std::string PlaceText(HWND window) {
    const RECT place = ScreenPlace(window);
    return std::to_string(place.left) + "," + std::to_string(place.top) + " to " + std::to_string(place.right) + "," +
           std::to_string(place.bottom);
}

TEST_F(CWindowBehaviour, AboutBoxIsInTheMiddleOfTheWindow) {
    const CDrivenDialog dialog = m_program.Start();
    // Away from the middle of the screen, and far enough from its edges.
    SetWindowPos(dialog.Window(), nullptr, 150, 200, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    Require("moved window", [&] { return dialog.ScreenRectangle().left == 150; });
    const HWND about = OpenAboutBox(dialog, IDM_ABOUTBOX);
    const auto isCentred = [&] {
        const RECT owner = dialog.ScreenRectangle();
        const RECT own = ScreenPlace(about);
        return std::abs(owner.left + owner.right - own.left - own.right) <= 2 &&
               std::abs(owner.top + owner.bottom - own.top - own.bottom) <= 2;
    };
    EXPECT_TRUE(WaitUntil(isCentred));
}

TEST_F(CWindowBehaviour, AboutBoxStaysOnTheScreen) {
    const CDrivenDialog dialog = m_program.Start();
    SetWindowPos(dialog.Window(), nullptr, -400, 900, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    Require("moved window", [&] { return dialog.ScreenRectangle().left == -400; });
    const HWND about = OpenAboutBox(dialog, IDM_ABOUTBOX);
    // The window manager may move a window by the frame that it draws.
    const int frame = GetSystemMetrics(SM_CYCAPTION) + GetSystemMetrics(SM_CYFRAME);
    const auto isVisible = [&] {
        const RECT own = ScreenPlace(about);
        return own.left >= 0 && own.bottom <= GetSystemMetrics(SM_CYSCREEN) + frame;
    };
    EXPECT_TRUE(WaitUntil(isVisible)) << PlaceText(about) << ", owner at " << PlaceText(dialog.Window());
}

TEST_F(CWindowBehaviour, AboutIconAndNameHaveTheSameMiddle) {
    const CDrivenDialog dialog = m_program.Start();
    const HWND about = OpenAboutBox(dialog, IDM_ABOUTBOX);
    const auto children = ChildrenOf(about);
    const RECT icon = ScreenPlace(children[0]);
    const RECT name = ScreenPlace(children[1]);
    EXPECT_EQ(TextOf(children[1]), "quorn_vantrel_v5.0");
    EXPECT_NEAR(icon.top + icon.bottom, name.top + name.bottom, 2);
    EXPECT_NE(GetWindowLongPtrW(children[1], GWL_STYLE) & SS_CENTERIMAGE, 0);
}

TEST_F(CWindowBehaviour, TooltipsAppearUnderTheMouse) {
    const CDrivenDialog dialog = m_program.Start();
    const RECT place = ScreenPlace(dialog.Control(IDC_BROWSE));
    const auto isShown = [&] {
        return FindWindowOf(m_program.ProcessId(), [](HWND window) {
                   return lstrcmpiW(ClassOf(window).c_str(), L"tooltips_class32") == 0;
               }) != nullptr;
    };
    int offset = 5;
    EXPECT_TRUE(WaitUntil([&] {
        constexpr Milliseconds kRest{3'000};  // of the pointer; longer than the delay of tooltips
        offset = 15 - offset;
        SetCursorPos(place.left + offset, place.top + offset);
        return WaitUntil(isShown, kRest);
    }));
    SetCursorPos(1, 1);
}

TEST_F(CWindowBehaviour, AboutLinksOpenTheirTargets) {
    struct SLink {
        int id;
        const char* file;
    };
    const CDrivenDialog dialog = m_program.Start();
    const HWND about = OpenAboutBox(dialog, IDM_ABOUTBOX);
    // Without a program for files of their kind, the browser opens them.
    for (const SLink& link : {SLink{IDC_ABOUT_WEB_LINK, "README.md"}, SLink{IDC_ABOUT_MAIL_LINK, "LICENSE"}}) {
        WriteText(m_folder / link.file, "text");
        const std::string note = m_folder / (std::to_string(link.id) + ".txt");
        const CRegisteredClass kind(L".htm", L"vantreltestpage", L"");
        const CRegisteredClass page(L"vantreltestpage", L"page", L"cmd.exe /c echo %1>" + WideOf(note));
        const HWND label = GetDlgItem(about, link.id);
        PostMessageW(label, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
        PostMessageW(label, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
        EXPECT_EQ(Note(note).find(m_folder / link.file), 0U) << Note(note);
    }
}

TEST_F(CWindowBehaviour, UnknownLinkHasNoTarget) {
    EXPECT_EQ(AboutLinkTarget(IDC_ABOUT_WEB_LINK), ProgramFolder() + L"README.md");
    EXPECT_EQ(AboutLinkTarget(IDC_ABOUT_MAIL_LINK), ProgramFolder() + L"LICENSE");
    EXPECT_EQ(AboutLinkTarget(IDOK), L"");
}

TEST_F(CWindowBehaviour, ExitEndsTheProcessWithStatusZero) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CWindowBehaviour, CloseBoxEndsTheProcessWithStatusZero) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.PressCloseBox();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

/// The window manager minimises with a delay, and its late report minimises a window once more that has been restored
/// meanwhile. The test restores the window until it stays.
TEST_F(CWindowBehaviour, MinimisedWindowPaintsAndCanBeRestored) {
    const CDrivenDialog dialog = m_program.Start();
    Require("active window", [&] { return FocusOf(dialog.Window()) != nullptr; });
    const CClientPicture before = SettledPicture(dialog.Window());
    Ask(dialog.Window(), WM_SYSCOMMAND, SC_MINIMIZE);
    Require("minimised window", [&] { return IsIconic(dialog.Window()) != FALSE; });
    Ask(dialog.Window(), WM_PAINT);
    EXPECT_TRUE(m_program.IsRunning());
    Require("the picture of before", [&] {
        if (IsIconic(dialog.Window()) != FALSE) {
            Ask(dialog.Window(), WM_SYSCOMMAND, SC_RESTORE);
        }
        return CClientPicture(dialog.Window()) == before;
    });
    EXPECT_FALSE(IsIconic(dialog.Window()));
}

TEST_F(CWindowBehaviour, EnterBrowses) {
    const CDrivenDialog dialog = m_program.Start();
    PostMessageW(dialog.Control(IDC_BROWSE), WM_KEYDOWN, VK_RETURN, 1);
    const CDrivenFileDialog chooser = WaitForFileDialog(m_program);
    chooser.Cancel();
    EXPECT_TRUE(m_program.IsRunning());
}

TEST_F(CWindowBehaviour, TabReachesEveryCommandInReadingOrder) {
    const CDrivenDialog dialog = m_program.Start();
    SetForegroundWindow(dialog.Window());
    Require("focus in the dialog", [&] { return FocusOf(dialog.Window()) != nullptr; });
    std::vector<int> order;
    for (int press = 0; press < 12; ++press) {
        const HWND focus = FocusOf(dialog.Window());
        order.push_back(GetDlgCtrlID(focus));
        PostMessageW(focus, WM_KEYDOWN, VK_TAB, 1);
        Require("moved focus", [&] {
            const HWND now = FocusOf(dialog.Window());
            return now != nullptr && now != focus;
        });
        if (FocusOf(dialog.Window()) == dialog.Control(order.front())) {
            break;
        }
    }
    EXPECT_EQ(order, (std::vector<int>{IDC_BROWSE, IDC_FULL_PATH, IDC_RELATIVE_PATH, IDC_COMPRESSION, IDC_SOUND,
                                       IDC_ALWAYS_ON_TOP, IDC_EXIT}));
}

}  // namespace
}  // namespace vantrel::test
