// The main dialog in the test's own process: its calls to the system, in their order.
#include "app/main_dialog.h"

#include <commctrl.h>
#include <gmock/gmock.h>
#include <shlobj.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "app/resource_file.h"
#include "files/native_file.h"
#include "files/utf.h"
#include "resources/resource_ids.h"
#include "tests/support/image_builder.h"
#include "tests/window/driver/poll.h"
#include "tests/window/program/system_calls.h"

namespace vantrel {

/// The names of the handlers and members, which an explicit instantiation may use although they are private.
template <auto... members>
struct SNames {};
template struct SNames<
    &CMainDialog::OnBrowse, &CMainDialog::OnDropFiles, &CMainDialog::OnVantrel, &CMainDialog::OnIsoToIml,
    &CMainDialog::OnIsoToBin, &CMainDialog::OnBinToIso, &CMainDialog::OnIsoToDax, &CMainDialog::OnDaxToIso,
    &CMainDialog::OnIsoToCso, &CMainDialog::OnCsoToIso, &CMainDialog::OnCheckPostgap,
    &CMainDialog::OnAddSelectivePostgap, &CMainDialog::OnFullPath, &CMainDialog::OnRelativePath,
    &CMainDialog::OnSoundChange, &CMainDialog::OnEffect, &CMainDialog::OnAlwaysOnTop, &CMainDialog::OnExit,
    &CMainDialog::OnClose, &CMainDialog::OnCreate, &CMainDialog::OnSysCommand, &CMainDialog::OnPaint,
    &CMainDialog::OnQueryDragIcon, &CMainDialog::OnTimer, &CMainDialog::OnMouseMove, &CMainDialog::OnLButtonDown,
    &CMainDialog::OnInitDialog, &CMainDialog::ChooseImlPath, &CMainDialog::m_hIcon, &CMainDialog::m_statusBar,
    &CMainDialog::m_buttonCursor, &CMainDialog::m_compressionCombo, &CMainDialog::m_soundCombo,
    &CMainDialog::m_effectCheck, &CMainDialog::m_topMostCheck, &CMainDialog::m_statusText, &CMainDialog::m_scratchText,
    &CMainDialog::m_fileName, &CMainDialog::m_folder, &CMainDialog::m_soundIndex, &CMainDialog::m_compressionIndex,
    &CMainDialog::m_workFolder, &CMainDialog::m_doneMessage, &CMainDialog::m_exportState, &CMainDialog::m_toolTip>;

namespace test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Enabled = std::vector<std::pair<int, bool>>;

/// Runs a script in the dialog when its loop has started, and then closes it.
class CScriptedDialog : public CMainDialog {
public:
    using Script = std::function<void(CScriptedDialog&)>;

    CScriptedDialog(CMessageLoop& loop, Script script) : CMainDialog(loop), m_script(std::move(script)) {}

    const std::vector<MSG>& Icons() const { return m_icons; }
    const std::vector<UINT>& Relayed() const { return m_relayed; }

    void Press(int controlId) const { Send(WM_COMMAND, MAKEWPARAM(controlId, BN_CLICKED)); }

    void Drop(const std::string& path) const {
        const std::wstring names = WideOf(path) + std::wstring(2, L'\0');
        const HGLOBAL block = GlobalAlloc(GPTR, sizeof(DROPFILES) + names.size() * sizeof(wchar_t));
        auto* const header = static_cast<DROPFILES*>(GlobalLock(block));
        header->pFiles = sizeof(DROPFILES);
        header->fWide = TRUE;
        std::copy(names.begin(), names.end(), reinterpret_cast<wchar_t*>(header + 1));
        GlobalUnlock(block);
        Send(WM_DROPFILES, reinterpret_cast<WPARAM>(block));
        GlobalFree(block);
    }

    /// Moves the keyboard focus away from the icon buttons.
    void ParkFocus() const { Send(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(IDC_ALWAYS_ON_TOP).Handle()), TRUE); }

    HWND ToolTips() const {
        HWND window = nullptr;
        DWORD process = 0;
        do {
            window = FindWindowExW(nullptr, window, TOOLTIPS_CLASSW, nullptr);
            GetWindowThreadProcessId(window, &process);
        } while (window != nullptr && process != GetCurrentProcessId());
        return window;
    }

    /// Records the messages that reach the tooltips while `call` runs.
    void WatchToolTips(const std::function<void()>& call) {
        SetWindowSubclass(ToolTips(), RecordRelayed, 1, reinterpret_cast<DWORD_PTR>(this));
        call();
        RemoveWindowSubclass(ToolTips(), RecordRelayed, 1);
    }

protected:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
        constexpr UINT kRunScript = WM_APP + 1;
        if (message == WM_SETICON) {
            m_icons.push_back({m_window, message, wParam, lParam, 0, {}});
        } else if (message == kRunScript) {
            m_script(*this);
            DestroyWindow(m_window);
            return 0;
        }
        const LRESULT result = CMainDialog::OnMessage(message, wParam, lParam);
        if (message == WM_INITDIALOG) {
            PostMessageW(m_window, kRunScript, 0, 0);
        }
        return result;
    }

private:
    static LRESULT CALLBACK RecordRelayed(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR self) {
        if (message == TTM_RELAYEVENT) {
            reinterpret_cast<CScriptedDialog*>(self)->m_relayed.push_back(
                reinterpret_cast<const MSG*>(lParam)->message);
        }
        return DefSubclassProc(window, message, wParam, lParam);
    }

    Script m_script;
    std::vector<MSG> m_icons;
    std::vector<UINT> m_relayed;
};

class CMainDialogTest : public ::testing::Test {
protected:
    CMainDialogTest() {
        g_calls.Clear();
        SetCursorPos(1, 1);
        SetCurrentDirectoryW(WideOf(m_folder.Path()).c_str());
    }
    ~CMainDialogTest() override {
        SetCurrentDirectoryW(ProgramFolder().c_str());  // the test's own folder could not be removed
        DeleteFileW((ProgramFolder() + L"Success.wav").c_str());
    }

    static void Run(const CScriptedDialog::Script& script) {
        CMessageLoop loop;
        CScriptedDialog dialog(loop, script);
        dialog.DoModal(loop);
    }

    CTestFolder m_folder;
};

TEST_F(CMainDialogTest, TheStartGreysTheConversionsAndAcceptsFiles) {
    Run([](CScriptedDialog&) {
        EXPECT_EQ(g_calls.enabled, (Enabled{{1032, false},
                                            {1001, false},
                                            {1005, false},
                                            {1012, false},
                                            {1021, false},
                                            {1029, false},
                                            {1030, false},
                                            {1033, false},
                                            {1034, false}}));
        EXPECT_THAT(g_calls.drops, ElementsAre(true));
        EXPECT_THAT(g_calls.boxes, IsEmpty());
    });
}

TEST_F(CMainDialogTest, TheWindowHasItsIconInBothSizesAndAsDragIcon) {
    Run([](const CScriptedDialog& dialog) {
        const auto icon =
            reinterpret_cast<LPARAM>(LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MAIN_ICON)));
        ASSERT_NE(icon, 0);
        ASSERT_THAT(dialog.Icons(), SizeIs(2));
        EXPECT_EQ(dialog.Icons()[0].wParam, static_cast<WPARAM>(ICON_BIG));
        EXPECT_EQ(dialog.Icons()[0].lParam, icon);
        EXPECT_EQ(dialog.Icons()[1].wParam, static_cast<WPARAM>(ICON_SMALL));
        EXPECT_EQ(dialog.Icons()[1].lParam, icon);
        EXPECT_EQ(dialog.Send(WM_GETICON, ICON_BIG), icon);
        EXPECT_EQ(dialog.Send(WM_GETICON, ICON_SMALL), icon);
        EXPECT_EQ(dialog.Send(WM_QUERYDRAGICON), icon);
    });
}

/// The appearance of a control.
std::vector<std::uint32_t> Picture(HWND control) {
    RECT client{};
    GetClientRect(control, &client);
    const CMemoryBitmap bitmap(client.right, client.bottom);
    SendMessageW(control, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(bitmap.Dc()), PRF_CLIENT);
    GdiFlush();
    return {bitmap.Pixels(), bitmap.Pixels() + client.right * client.bottom};
}

TEST_F(CMainDialogTest, EveryIconButtonShowsItsIcon) {
    constexpr std::pair<int, int> kIcons[] = {{1, 183},    {1005, 184}, {2, 185},    {1001, 190}, {1012, 193},
                                              {1021, 194}, {1025, 198}, {1026, 199}, {1029, 201}, {1030, 202},
                                              {1032, 204}, {1033, 206}, {1034, 207}};
    Run([&](const CScriptedDialog& dialog) {
        dialog.ParkFocus();
        const HWND other = CreateDialogParamW(
            GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_MAIN), nullptr,
            [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
        SendMessageW(other, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(other, IDC_ALWAYS_ON_TOP)), TRUE);
        for (const auto& [buttonId, iconId] : kIcons) {
            SCOPED_TRACE(buttonId);
            dialog.Item(buttonId).Enable(true);
            CIconButton button;
            button.Attach(GetDlgItem(other, buttonId));
            button.SetIcon(iconId == IDI_BROWSE ? IDI_EXIT : IDI_BROWSE);
            EXPECT_NE(Picture(dialog.Item(buttonId).Handle()), Picture(button.Window()));
            button.SetIcon(iconId);
            EXPECT_EQ(Picture(dialog.Item(buttonId).Handle()), Picture(button.Window()));
        }
        DestroyWindow(other);
    });
}

/// The sizes of an icon resource.
std::vector<int> SizesOf(int iconId) {
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(iconId), MAKEINTRESOURCEW(14));  // RT_GROUP_ICON
    const auto* bytes = static_cast<const std::uint8_t*>(LockResource(LoadResource(nullptr, found)));
    constexpr int kHeader = 6;
    constexpr int kEntry = 14;
    std::vector<int> sizes;
    for (int i = 0; i < bytes[4]; ++i) {
        sizes.push_back(bytes[kHeader + i * kEntry]);
    }
    return sizes;
}

TEST_F(CMainDialogTest, EveryIconIsDrawnInEverySizeOfTheButtons) {
    for (const int iconId : {183, 184, 185, 190, 193, 194, 198, 199, 201, 202, 204, 206, 207}) {
        SCOPED_TRACE(iconId);
        for (const int size : {16, 24, 32, 40, 48, 64}) {
            EXPECT_EQ(ButtonIconSize(size), size);
            EXPECT_THAT(SizesOf(iconId), ::testing::Contains(size));
        }
    }
}

/// Anyone may put a DLL of the same name beside the program.
TEST_F(CMainDialogTest, VisualStylesComeFromTheSystemFolderOnEveryWindows) {
    Run([](const CScriptedDialog&) {
        std::wstring folder(MAX_PATH, L'\0');
        folder.resize(GetSystemDirectoryW(folder.data(), MAX_PATH));
        EXPECT_THAT(g_calls.libraries, ::testing::Contains(folder + L"\\UxTheme.dll"));
        EXPECT_THAT(g_calls.libraries, Each(::testing::StartsWith(folder + L"\\")));
        EXPECT_TRUE(CThemeLibrary().IsActive());
    });
}

TEST_F(CMainDialogTest, TooltipsAreAddedInTheirOrder) {
    const std::vector<std::pair<int, std::string>> expected = {
        {1001, "iso2iml"},
        {1005, "vantrel"},
        {1012, "iso2bin"},
        {1021, "bin2iso"},
        {1029, "iso2dax"},
        {1030, "dax2iso"},
        {1025, "\"\\Game_Folder\\SYSTEM.CNF\""},
        {1026, "\"SYSTEM.CNF\""},
        {1, "Open an Image File"},
        {1032, "Write a 150 block postgap at the end of the track"},
        {1033, "iso2cso"},
        {1034, "cso2iso"}};
    Run([&](const CScriptedDialog& dialog) {
        const HWND window = dialog.ToolTips();
        std::vector<std::pair<int, std::string>> tools;
        const LRESULT count = SendMessageW(window, TTM_GETTOOLCOUNT, 0, 0);
        for (LRESULT i = 0; i < count; ++i) {
            wchar_t text[80] = {};
            TTTOOLINFOW tool{};
            tool.cbSize = TTTOOLINFOW_V2_SIZE;
            tool.lpszText = text;
            SendMessageW(window, TTM_ENUMTOOLSW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&tool));
            tools.emplace_back(GetDlgCtrlID(reinterpret_cast<HWND>(tool.uId)), Utf8Of(text));
        }
        EXPECT_EQ(tools, expected);
    });
}

TEST_F(CMainDialogTest, EveryMessageIsRelayedToTheTooltips) {
    Run([](CScriptedDialog& dialog) {
        const HWND button = dialog.Item(IDC_BROWSE).Handle();
        dialog.WatchToolTips([&] {
            for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONUP, WM_KEYDOWN, WM_TIMER}) {
                MSG posted = {button, message, 0, MAKELPARAM(5, 5), 0, {}};
                dialog.PreTranslateMessage(posted);
            }
        });
        EXPECT_THAT(dialog.Relayed(), ElementsAre(WM_MOUSEMOVE, WM_LBUTTONUP, WM_KEYDOWN, WM_TIMER));
    });
}

/// The frames of the animation that zooms, as far as the time of a slow screen allows.
void ExpectZoom(const RECT& window, bool isOpening) {
    CWindowAnimation animation;
    animation.SetStyle(3);
    std::vector<RECT> expected = animation.Frames(window);
    if (!isOpening) {
        std::reverse(expected.begin(), expected.end());
    }
    ASSERT_FALSE(g_calls.frames.empty());
    ASSERT_LE(g_calls.frames.size(), 2 * expected.size());
    for (std::size_t i = 0; i < g_calls.frames.size(); ++i) {
        EXPECT_TRUE(EqualRect(&g_calls.frames[i], &expected[i / 2])) << "frame " << i / 2;
    }
}

TEST_F(CMainDialogTest, OpensWithAnAnimationInTheMiddleOfTheScreen) {
    Run([](const CScriptedDialog& dialog) {
        const RECT window = dialog.ScreenRect();
        EXPECT_EQ(window.left, GetSystemMetrics(SM_CXSCREEN) / 2 - (window.right - window.left) / 2);
        EXPECT_EQ(window.top, GetSystemMetrics(SM_CYSCREEN) / 2 - (window.bottom - window.top) / 2);
        ExpectZoom(window, true);
    });
}

TEST_F(CMainDialogTest, NothingIsAnimatedIfTheUserHasTurnedAnimationsOff) {
    g_calls.areAnimationsOn = false;
    Run([](const CScriptedDialog& dialog) {
        dialog.Send(WM_CLOSE);
        EXPECT_THAT(g_calls.frames, IsEmpty());
        MSG message{};
        EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    });
}

TEST_F(CMainDialogTest, TheCloseBoxClosesWithAnAnimationAndQuits) {
    Run([](const CScriptedDialog& dialog) {
        SetWindowPos(dialog.Handle(), nullptr, 20, 30, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        g_calls.Clear();
        dialog.Send(WM_CLOSE);
        ExpectZoom(dialog.ScreenRect(), false);
        MSG message{};
        EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
        EXPECT_TRUE(IsWindow(dialog.Handle()));
    });
}

TEST_F(CMainDialogTest, ExitClosesWithAnAnimationAndEndsTheProcess) {
    EXPECT_EXIT(Run([](const CScriptedDialog& dialog) {
                    static RECT window;
                    SetWindowPos(dialog.Handle(), nullptr, 20, 30, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
                    g_calls.Clear();
                    window = dialog.ScreenRect();
                    std::atexit([] {
                        ExpectZoom(window, false);
                        std::fputs(testing::Test::HasFailure() ? "no animation" : "animated", stderr);
                    });
                    dialog.Press(IDC_EXIT);
                }),
                testing::ExitedWithCode(0), "^animated$");
}

TEST_F(CMainDialogTest, TheOpenDialogHasItsFilterFolderAndFlags) {
    Run([this](const CScriptedDialog& dialog) {
        dialog.Press(IDC_BROWSE);
        ASSERT_THAT(g_calls.fileDialogs, SizeIs(1));
        const SRecordedFileDialog& asked = g_calls.fileDialogs[0];
        constexpr wchar_t kFilter[] =
            L"iml/iso/dax Files(*.iml/iso/bin/dax/cso)\0*.iml;*.iso;*.bin;*.dax;*.cso\0iml Files(*.iml)\0*.iml\0"
            L"iso Files(*.iso)\0*.iso\0dax Files(*.dax)\0*.dax\0cso Files(*.cso)\0*.cso\0All files (*.*)\0*.*\0";
        EXPECT_EQ(asked.filter, std::wstring(kFilter, std::size(kFilter) - 1));
        EXPECT_FALSE(asked.isSave);
        EXPECT_EQ(asked.record.Flags, static_cast<DWORD>(OFN_READONLY | OFN_EXPLORER | OFN_ENABLESIZING));
        EXPECT_EQ(asked.record.hwndOwner, dialog.Handle());
        EXPECT_EQ(asked.record.lpstrDefExt, nullptr);
        EXPECT_EQ(asked.initialFolder + L"\\", WideOf(m_folder.Path()));
        EXPECT_EQ(asked.initialName, L"");
        EXPECT_EQ(asked.title, L"");
        EXPECT_GE(asked.record.nMaxFile, 260U);
        ASSERT_THAT(g_calls.boxes, SizeIs(1));
        EXPECT_EQ(g_calls.boxes[0].text, L"You cancelled.");
        EXPECT_EQ(g_calls.boxes[0].caption, L"No File Chosen");
        EXPECT_EQ(g_calls.boxes[0].style, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
    });
}

TEST_F(CMainDialogTest, TheOpenDialogStartsInTheFolderOfTheInput) {
    ASSERT_TRUE(MakeFolder(m_folder / "Discs"));
    Run([this](const CScriptedDialog& dialog) {
        g_calls.chosenFile = WideOf(m_folder / "Discs\\Game.CSO");
        dialog.Press(IDC_BROWSE);
        EXPECT_EQ(dialog.Item(IDC_FOLDER).Text(), WideOf(m_folder / "Discs\\"));
        EXPECT_EQ(dialog.Item(IDC_FILE_NAME).Text(), L"game.cso");
        dialog.Press(IDC_BROWSE);
        EXPECT_EQ(g_calls.fileDialogs[1].initialFolder, WideOf(m_folder / "Discs"));
    });
}

TEST_F(CMainDialogTest, TheDialogForTheLayoutHasItsFilterFolderAndFlags) {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}};
    WriteWhole(m_folder / "game.iso", BuildImage(description).bytes);
    Run([this](const CScriptedDialog& dialog) {
        dialog.Drop(m_folder / "game.iso");
        g_calls.Clear();
        dialog.Press(IDC_ISO_TO_IML);
        ASSERT_THAT(g_calls.fileDialogs, SizeIs(1));
        const SRecordedFileDialog& asked = g_calls.fileDialogs[0];
        constexpr wchar_t kFilter[] = L"iml Files (*.iml)\0*.iml\0All files (*.*)\0*.*\0";
        EXPECT_EQ(asked.filter, std::wstring(kFilter, std::size(kFilter) - 1));
        EXPECT_TRUE(asked.isSave);
        EXPECT_EQ(asked.record.Flags & OFN_OVERWRITEPROMPT, 0U) << "an older layout is replaced without asking";
        EXPECT_EQ(asked.record.lpstrDefExt, nullptr);
        EXPECT_EQ(asked.initialFolder + L"\\", WideOf(m_folder.Path()));
        EXPECT_EQ(asked.initialName, L"");
        EXPECT_EQ(asked.title, L"");
        ASSERT_THAT(g_calls.boxes, SizeIs(1));
        EXPECT_EQ(g_calls.boxes[0].caption, L"No File Chosen");
        EXPECT_EQ(g_calls.enabled.back(), std::pair(IDC_COMPRESSION, true)) << "the ending of a cancelled choice";
        EXPECT_EQ(g_calls.drops.back(), true);
    });
}

TEST_F(CMainDialogTest, TheFolderDialogHasItsTitleAndFlags) {
    Run([this](const CScriptedDialog& dialog) {
        dialog.Item(IDC_IML_PATH).SetText(WideOf(m_folder.Path()));
        dialog.Press(IDC_FULL_PATH);
        ASSERT_THAT(g_calls.fileDialogs, SizeIs(1));
        const SRecordedFileDialog& asked = g_calls.fileDialogs[0];
        EXPECT_EQ(asked.title, L"Select folder");
        EXPECT_EQ(asked.filter, std::wstring(L"Folders\0*..*\0", 13));
        EXPECT_EQ(asked.initialFolder, WideOf(m_folder.Path()));
        EXPECT_NE(asked.record.Flags & OFN_HIDEREADONLY, 0U);
        EXPECT_NE(asked.record.Flags & OFN_OVERWRITEPROMPT, 0U);
        EXPECT_EQ(dialog.Item(IDC_IML_PATH).Text(), WideOf(m_folder.Path())) << "cancelled";
        EXPECT_THAT(g_calls.boxes, IsEmpty());
    });
}

Enabled StatesFor(std::initializer_list<int> on, std::initializer_list<int> off) {
    Enabled states;
    for (const int id : on) {
        states.emplace_back(id, true);
    }
    for (const int id : off) {
        states.emplace_back(id, false);
    }
    return states;
}

TEST_F(CMainDialogTest, AnInputSetsTheButtonsInTheirOrder) {
    const std::pair<const char*, Enabled> kCases[] = {
        {".iso", StatesFor({1001, 1012, 1029, 1032, 1033}, {1005, 1021, 1030, 1034})},
        {".iml", StatesFor({1005}, {1001, 1012, 1021, 1032, 1029, 1030, 1033, 1034})},
        {".bin", StatesFor({1021}, {1001, 1005, 1012, 1029, 1030, 1032, 1033, 1034})},
        {".dax", StatesFor({1030}, {1021, 1001, 1005, 1012, 1029, 1032, 1033, 1034})},
        {".cso", StatesFor({1034}, {1021, 1001, 1005, 1012, 1029, 1030, 1032, 1033})}};
    Run([&](const CScriptedDialog& dialog) {
        for (const auto& [extension, states] : kCases) {
            SCOPED_TRACE(extension);
            g_calls.Clear();
            dialog.Drop(m_folder / ("game" + std::string(extension)));
            Enabled dropped = states;
            dropped.emplace_back(IDC_BROWSE, true);
            EXPECT_EQ(g_calls.enabled, dropped);
            EXPECT_THAT(g_calls.drops, ElementsAre(false));
            g_calls.Clear();
            g_calls.chosenFile = WideOf(m_folder / ("game" + std::string(extension)));
            dialog.Press(IDC_BROWSE);
            EXPECT_EQ(g_calls.enabled, states);
            EXPECT_THAT(g_calls.drops, IsEmpty());
            EXPECT_THAT(g_calls.boxes, IsEmpty());
        }
    });
}

TEST_F(CMainDialogTest, ARejectedInputGreysAllButtonsAndAcceptsFiles) {
    Run([this](const CScriptedDialog& dialog) {
        const auto expectRejection = [&](const std::wstring& text) {
            ASSERT_THAT(g_calls.boxes, SizeIs(1));
            EXPECT_EQ(g_calls.boxes[0].text, text);
            EXPECT_EQ(g_calls.boxes[0].style, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
            EXPECT_EQ(dialog.Item(IDC_FILE_NAME).Text(), L"");
            EXPECT_THAT(g_calls.enabled, SizeIs(9));
            EXPECT_THAT(g_calls.enabled, Each(::testing::Field(&std::pair<int, bool>::second, false)));
            EXPECT_THAT(g_calls.drops, ElementsAre(true));
            g_calls.Clear();
        };
        g_calls.Clear();
        dialog.Drop(m_folder / "game.img");
        expectRejection(L"invalid iso or iml or bin or cso file.");
        g_calls.chosenFile = WideOf(m_folder / "game");
        dialog.Press(IDC_BROWSE);
        expectRejection(L"invalid iso or iml or bin or csofile.");
    });
}

std::wstring CurrentFolderText() {
    std::wstring folder(MAX_PATH, L'\0');
    folder.resize(GetCurrentDirectoryW(MAX_PATH, folder.data()));
    return folder;
}

TEST_F(CMainDialogTest, ADropChangesTheCurrentFolderButNotTheDrive) {
    ASSERT_TRUE(MakeFolder(m_folder / "Discs"));
    Run([this](const CScriptedDialog& dialog) {
        dialog.Drop(m_folder / "Discs\\game.iso");
        EXPECT_EQ(CurrentFolderText(), WideOf(m_folder / "Discs"));
        std::string elsewhere = m_folder / "game.iso";
        elsewhere[0] = 'q';
        dialog.Drop(elsewhere);
        EXPECT_EQ(dialog.Item(IDC_FOLDER).Text(), WideOf(elsewhere.substr(0, elsewhere.find_last_of('\\') + 1)));
        EXPECT_EQ(CurrentFolderText() + L"\\", WideOf(m_folder.Path()));
    });
}

TEST_F(CMainDialogTest, TheEffectStartsItsTimer) {
    Run([](const CScriptedDialog& dialog) {
        g_calls.Clear();
        dialog.Press(IDC_EFFECT);
        EXPECT_THAT(g_calls.timers, ElementsAre(std::pair<UINT_PTR, UINT>(1971, 30)));
        KillTimer(dialog.Handle(), 1971);
    });
}

/// The pixels above the first group box, in the middle of the dialog.
std::vector<std::uint32_t> StripOf(HDC dc) {
    constexpr int kLeft = 260;
    constexpr int kWidth = 80;
    constexpr int kHeight = 8;
    const CMemoryBitmap bitmap(kWidth, kHeight);
    BitBlt(bitmap.Dc(), 0, 0, kWidth, kHeight, dc, kLeft, 0, SRCCOPY);
    GdiFlush();
    std::vector<std::uint32_t> pixels(bitmap.Pixels(), bitmap.Pixels() + kWidth * kHeight);
    for (std::uint32_t& pixel : pixels) {
        pixel &= 0xFFFFFF;
    }
    return pixels;
}

TEST_F(CMainDialogTest, ThePointerDropsSmallAndAClickLargeRipples) {
    Run([](const CScriptedDialog& dialog) {
        constexpr std::pair<UINT, SRippleDrop> kDrops[] = {{WM_MOUSEMOVE, {5, 50}}, {WM_LBUTTONDOWN, {10, 200}}};
        CRippleEffect expected;
        ASSERT_TRUE(expected.SetPicture(IDB_EFFECT_PICTURE, kEffectWidth, kEffectHeight));
        const CMemoryBitmap bitmap(600, 100);
        expected.Paint(bitmap.Dc());
        const auto still = StripOf(bitmap.Dc());
        for (const auto& [message, drop] : kDrops) {
            SCOPED_TRACE(message);
            dialog.Send(message, 0, MAKELPARAM(300, 4));
            expected.DropAt({300, 4}, drop);
            Require("ripples", [&] {
                dialog.Send(WM_TIMER, kEffectTimer);
                expected.Advance();
                EXPECT_FALSE(expected.IsAtRest());
                expected.Paint(bitmap.Dc());
                const HDC dc = GetDC(dialog.Handle());
                const auto shown = StripOf(dc);
                ReleaseDC(dialog.Handle(), dc);
                const auto stirred = StripOf(bitmap.Dc());
                return expected.IsAtRest() || (shown == stirred && stirred != still);
            });
            while (!expected.IsAtRest()) {
                dialog.Send(WM_TIMER, kEffectTimer);
                expected.Advance();
            }
        }
    });
}

}  // namespace
}  // namespace test
}  // namespace vantrel
