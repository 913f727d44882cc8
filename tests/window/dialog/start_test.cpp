// The window after its start, and the ways of ending it. The second header needs what the first one declares.
// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on
#include <gmock/gmock.h>

#include <map>

#include "app/ui/scaling.h"
#include "files/native_file.h"
#include "files/utf.h"
#include "tests/window/driver/remote_memory.h"
#include "tests/window/driver/window_query.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

using ::testing::ElementsAre;

struct SControl {
    int id;
    const wchar_t* windowClass;
    const char* text;
    bool enabled;
    bool visible;
    const char* toolTip;
};

constexpr SControl kControls[] = {
    {IDC_BROWSE, L"Button", "", true, true, "Open an Image File"},
    {IDC_FILE_NAME, L"Edit", "", false, true, nullptr},
    {IDC_VANTREL, L"Button", "vantrel", false, true, "vantrel"},
    {IDC_EXIT, L"Button", "Exit", true, true, nullptr},
    {IDC_EFFECT, L"Button", "Effect", false, false, nullptr},
    {IDC_ALWAYS_ON_TOP, L"Button", "Always On Top", true, true, nullptr},
    {IDC_STATUS_LINE, L"Static", "", true, true, nullptr},
    {IDC_ISO_TO_IML, L"Button", "iso2iml", false, true, "iso2iml"},
    {IDC_OUTPUT_FOLDER, L"Edit", "", false, false, nullptr},
    {IDC_OUTPUT_NAME, L"Edit", "", false, false, nullptr},
    {IDC_ISO_TO_BIN, L"Button", "iso2bin", false, true, "iso2bin"},
    {IDC_BIN_TO_ISO, L"Button", "bin2iso", false, true, "bin2iso"},
    {IDC_IML_PATH, L"Static", "", true, true, nullptr},
    {IDC_FULL_PATH, L"Button", "Full Path", true, true, "\"\\Game_Folder\\SYSTEM.CNF\""},
    {IDC_RELATIVE_PATH, L"Button", "Relative Path", true, true, "\"SYSTEM.CNF\""},
    {IDC_ISO_TO_DAX, L"Button", "iso2dax", false, true, "iso2dax"},
    {IDC_DAX_TO_ISO, L"Button", "dax2iso", false, true, "dax2iso"},
    {IDC_CHECK_POSTGAP, L"Button", "check postgap", false, true, "Write a 150 block postgap at the end of the track"},
    {IDC_ISO_TO_CSO, L"Button", "iso2cso", false, true, "iso2cso"},
    {IDC_CSO_TO_ISO, L"Button", "cso2iso", false, true, "cso2iso"},
    {IDC_ADD_POSTGAP, L"Button", "Add Selective postgap", false, true, nullptr},
    {IDC_SOUND, L"ComboBox", nullptr, true, true, nullptr},
    {IDC_COMPRESSION, L"ComboBox", nullptr, true, true, nullptr},
};

DWORD StyleOf(HWND window) {
    return static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
}

class CStartTest : public CWindowTest {
protected:
    /// The group box that contains the centre of a control.
    static std::string GroupAround(const CDrivenDialog& dialog, int id) {
        RECT inner{};
        GetWindowRect(dialog.Control(id), &inner);
        const POINT centre = {(inner.left + inner.right) / 2, (inner.top + inner.bottom) / 2};
        for (const HWND child : ChildrenOf(dialog.Window())) {
            RECT outer{};
            GetWindowRect(child, &outer);
            const bool isGroup = ClassOf(child) == L"Button" && (StyleOf(child) & BS_TYPEMASK) == BS_GROUPBOX;
            if (isGroup && PtInRect(&outer, centre) != FALSE) {
                return TextOf(child);
            }
        }
        return "";
    }
};

TEST_F(CStartTest, EveryControlIsInItsInitialState) {
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_EQ(dialog.Caption(), "quorn_vantrel_v5.0");
    for (const SControl& control : kControls) {
        SCOPED_TRACE(control.id);
        EXPECT_EQ(ClassOf(dialog.Control(control.id)), control.windowClass);
        if (control.text != nullptr) {
            EXPECT_EQ(dialog.Text(control.id), control.text);
        }
        EXPECT_EQ(dialog.IsEnabled(control.id), control.enabled);
        EXPECT_EQ(dialog.IsVisible(control.id), control.visible);
        const std::optional<std::string> toolTip = dialog.ToolTip(control.id);
        EXPECT_EQ(toolTip.value_or(""), control.toolTip == nullptr ? "" : control.toolTip);
    }
    EXPECT_FALSE(dialog.IsChecked(IDC_ALWAYS_ON_TOP));
    EXPECT_FALSE(dialog.IsChecked(IDC_EFFECT));
    EXPECT_FALSE(dialog.IsTopMost());
    EXPECT_TRUE(dialog.AcceptsDrops());
}

TEST_F(CStartTest, InputFieldsShowTheWorkingFolderAndCannotBeEdited) {
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_EQ(dialog.Text(IDC_FOLDER), m_folder.Path());
    EXPECT_FALSE(dialog.IsEnabled(IDC_FOLDER));
    EXPECT_NE(StyleOf(dialog.Control(IDC_FOLDER)) & ES_READONLY, 0U);
    EXPECT_NE(StyleOf(dialog.Control(IDC_FILE_NAME)) & ES_READONLY, 0U);
    EXPECT_NE(StyleOf(dialog.Control(IDC_FILE_NAME)) & ES_LOWERCASE, 0U);
}

TEST_F(CStartTest, GroupBoxesContainTheirControls) {
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_EQ(GroupAround(dialog, IDC_FOLDER), "Folder Path");
    EXPECT_EQ(GroupAround(dialog, IDC_FILE_NAME), "IML/ISO File");
    EXPECT_EQ(GroupAround(dialog, IDC_STATUS_LINE), "Progress Bar");
    EXPECT_EQ(GroupAround(dialog, IDC_SOUND), "Sound Options");
    EXPECT_EQ(GroupAround(dialog, IDC_IML_PATH), "iso2iml Options : Select IML Path");
    EXPECT_EQ(GroupAround(dialog, IDC_FULL_PATH), "iso2iml Options : Select IML Path");
    EXPECT_EQ(GroupAround(dialog, IDC_RELATIVE_PATH), "iso2iml Options : Select IML Path");
    EXPECT_EQ(GroupAround(dialog, IDC_COMPRESSION), "DAX/CSO Compression Level");
}

TEST_F(CStartTest, ListsAreFilledAndSelected) {
    WriteWhole(m_folder / "zebra.WAV", {});
    WriteWhole(m_folder / "readme.txt", {});
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_THAT(dialog.Entries(IDC_SOUND), ElementsAre("@No Sound Selected", "Success.wav", "zebra.WAV"));
    EXPECT_EQ(dialog.Selection(IDC_SOUND), 1);
    EXPECT_THAT(dialog.Entries(IDC_COMPRESSION),
                ElementsAre("1  Default", "2", "3", "4", "5", "6", "7", "8", "9 slower but better compression"));
    EXPECT_EQ(dialog.Selection(IDC_COMPRESSION), 8);
    EXPECT_NE(StyleOf(dialog.Control(IDC_SOUND)) & CBS_SORT, 0U);
    EXPECT_NE(StyleOf(dialog.Control(IDC_COMPRESSION)) & CBS_SORT, 0U);
}

TEST_F(CStartTest, FoldersJoinTheSoundListAndTheFirstEntryStaysFirst) {
    ASSERT_TRUE(MakeFolder(m_folder / "Music"));
    WriteWhole(m_folder / "!first.wav", {});
    const CDrivenDialog dialog = m_program.Start();
    const std::vector<std::string> entries = dialog.Entries(IDC_SOUND);
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries.front(), "@No Sound Selected");
    EXPECT_THAT(entries, ::testing::UnorderedElementsAre("@No Sound Selected", "!first.wav", "[Music]", "Success.wav"));
    EXPECT_EQ(dialog.Selection(IDC_SOUND), 1);
}

TEST_F(CStartTest, DefaultSoundIsWrittenBesideTheProgramAndListedFromTheWorkingFolder) {
    const CTestFolder elsewhere;
    const CDrivenDialog dialog = m_program.Start(elsewhere.Path());
    EXPECT_EQ(dialog.Text(IDC_FOLDER), elsewhere.Path());
    EXPECT_THAT(dialog.Entries(IDC_SOUND), ElementsAre("@No Sound Selected"));
    EXPECT_THAT(m_folder.Names(), ::testing::Contains("Success.wav"));
    EXPECT_THAT(elsewhere.Names(), ::testing::IsEmpty());
}

TEST_F(CStartTest, PanesAreEmpty) {
    const CDrivenDialog dialog = m_program.Start();
    for (const EPane pane : {EPane::File, EPane::Bytes, EPane::Status, EPane::Percent}) {
        EXPECT_EQ(dialog.Pane(pane), "");
    }
}

TEST_F(CStartTest, WindowIsInTheMiddleOfTheScreen) {
    const CDrivenDialog dialog = m_program.Start();
    const RECT rect = dialog.ScreenRectangle();
    EXPECT_EQ(rect.left, GetSystemMetrics(SM_CXSCREEN) / 2 - (rect.right - rect.left) / 2);
    EXPECT_EQ(rect.top, GetSystemMetrics(SM_CYSCREEN) / 2 - (rect.bottom - rect.top) / 2);
}

TEST_F(CStartTest, ExitEndsWithStatusZero) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CStartTest, CloseBoxEndsWithStatusZero) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.PressCloseBox();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CStartTest, EscapeExits) {
    const CDrivenDialog dialog = m_program.Start();
    PostMessageW(dialog.Control(IDC_BROWSE), WM_KEYDOWN, VK_ESCAPE, 1);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CStartTest, AlwaysOnTopIsSwitchedOnAndOff) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_ALWAYS_ON_TOP);
    Require("the window on top", [&] { return dialog.IsTopMost(); });
    dialog.Press(IDC_ALWAYS_ON_TOP);
    Require("the window among the others", [&] { return !dialog.IsTopMost(); });
}

HWND StatusBar(const CDrivenDialog& dialog) {
    for (const HWND child : ChildrenOf(dialog.Window())) {
        if (lstrcmpiW(ClassOf(child).c_str(), STATUSCLASSNAMEW) == 0) {
            return child;
        }
    }
    return nullptr;
}

TEST_F(CStartTest, PanesHaveTheirWidths) {
    const CDrivenDialog dialog = m_program.Start();
    const HWND bar = StatusBar(dialog);
    int edges[4] = {};
    CRemoteMemory memory(m_program.Process(), sizeof edges);
    ASSERT_EQ(Ask(bar, SB_GETPARTS, 4, reinterpret_cast<LPARAM>(memory.Address())), 4);
    memory.Read(edges, sizeof edges);
    EXPECT_THAT(edges, ElementsAre(Scaled(bar, 250), Scaled(bar, 350), Scaled(bar, 515), -1));
}

/// The colour of a point of the screen.
COLORREF ColourAt(POINT point) {
    const HDC screen = GetDC(nullptr);
    const COLORREF colour = GetPixel(screen, point.x, point.y);
    ReleaseDC(nullptr, screen);
    return colour;
}

TEST_F(CStartTest, TheStatusBarIsGrey) {
    const CDrivenDialog dialog = m_program.Start();
    POINT point = {100, 10};
    ClientToScreen(StatusBar(dialog), &point);
    EXPECT_TRUE(WaitUntil([&] { return ColourAt(point) == RGB(180, 180, 180); })) << std::hex << ColourAt(point);
}

TEST_F(CStartTest, TheLayoutFolderHasACompleteFrameAndMargins) {
    const CDrivenDialog dialog = m_program.Start();
    const HWND field = dialog.Control(IDC_IML_PATH);
    RECT place{};
    GetWindowRect(field, &place);
    const LONG x = (place.left + place.right) / 2;
    const LONG y = (place.top + place.bottom) / 2;
    for (const POINT edge :
         {POINT{place.left, y}, POINT{place.right - 1, y}, POINT{x, place.top}, POINT{x, place.bottom - 1}}) {
        EXPECT_TRUE(WaitUntil([&] { return ColourAt(edge) == GetSysColor(COLOR_BTNSHADOW); }))
            << edge.x << ", " << edge.y;
    }
    RECT client{};
    GetClientRect(field, &client);
    EXPECT_GE(place.right - place.left - client.right, 2 * Scaled(field, 3));
}

/// The resources of the shipped program.
class CResources {
public:
    explicit CResources(const std::string& program)
        : m_module(LoadLibraryExW(WideOf(program).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE)) {}
    ~CResources() { FreeLibrary(m_module); }
    CResources(const CResources&) = delete;
    CResources& operator=(const CResources&) = delete;

    std::string String(UINT id) const {
        wchar_t text[64] = {};
        LoadStringW(m_module, id, text, 64);
        return Utf8Of(text);
    }
    /// Width and height of a dialog in dialog units.
    std::pair<int, int> DialogSize(int id) const {
        struct SExtendedTemplate {
            WORD version;
            WORD signature;
            DWORD help;
            DWORD extendedStyle;
            DWORD style;
            WORD controls;
            short x;
            short y;
            short width;
            short height;
        };
        const HRSRC found = FindResourceW(m_module, MAKEINTRESOURCEW(id), RT_DIALOG);
        const auto* dialog = static_cast<const SExtendedTemplate*>(LockResource(LoadResource(m_module, found)));
        return {dialog->width, dialog->height};
    }
    Bytes Binary(int id) const {
        const HRSRC found = FindResourceW(m_module, MAKEINTRESOURCEW(id), L"BIN");
        const auto* bytes = static_cast<const std::uint8_t*>(LockResource(LoadResource(m_module, found)));
        return Bytes(bytes, bytes + SizeofResource(m_module, found));
    }

private:
    HMODULE m_module;
};

TEST_F(CStartTest, DialogsAndStringsAreThoseOfTheProgram) {
    const CResources resources(m_folder / "quorn_vantrel.exe");
    EXPECT_EQ(resources.DialogSize(102), std::pair(381, 214));
    EXPECT_EQ(resources.DialogSize(100), std::pair(270, 131));
    EXPECT_EQ(resources.String(101), "&About");
    EXPECT_EQ(resources.String(102), "FILE");
    EXPECT_EQ(resources.String(103), "BYTES");
    EXPECT_EQ(resources.String(104), "STATUS");
    EXPECT_EQ(resources.String(105), "@No Sound Selected");
    EXPECT_EQ(resources.String(106), "PERCENT");
}

TEST_F(CStartTest, ALongerFileIsReplacedByTheDefaultSound) {
    const Bytes sound = CResources(m_folder / "quorn_vantrel.exe").Binary(196);
    ASSERT_GT(sound.size(), 1000U);
    WriteWhole(m_folder / "Success.wav", Bytes(sound.size() + 5000, 7));
    m_program.Start();
    EXPECT_EQ(ReadWhole(m_folder / "Success.wav"), sound);
}

}  // namespace
}  // namespace vantrel::test
