// Choosing an input: dropped or browsed, accepted or rejected; and choosing the folder for the layout.
#include <gmock/gmock.h>

#include <set>

#include "files/native_file.h"
#include "files/path.h"
#include "files/utf.h"
#include "tests/support/image_builder.h"
#include "tests/window/driver/window_query.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

constexpr int kNine[] = {IDC_ISO_TO_IML, IDC_VANTREL,    IDC_ISO_TO_BIN, IDC_BIN_TO_ISO,   IDC_ISO_TO_DAX,
                         IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO, IDC_CHECK_POSTGAP};

const std::set<int> kIsoCommands = {IDC_ISO_TO_IML, IDC_ISO_TO_BIN, IDC_ISO_TO_DAX, IDC_CHECK_POSTGAP, IDC_ISO_TO_CSO};

std::set<int> Enabled(const CDrivenDialog& dialog) {
    std::set<int> enabled;
    for (const int id : kNine) {
        if (dialog.IsEnabled(id)) {
            enabled.insert(id);
        }
    }
    return enabled;
}

class CInputTest : public CWindowTest {
protected:
    /// Chooses a file in the dialog of the browse button.
    void Browse(const CDrivenDialog& dialog, const std::string& path) const {
        dialog.Press(IDC_BROWSE);
        WaitForFileDialog(m_program).Choose(path);
    }

    void ExpectRejection(const CDrivenDialog& dialog, const std::string& text) const {
        const CDrivenBox box = WaitForBox(m_program);
        EXPECT_EQ(box.Text(), text);
        EXPECT_EQ(box.Caption(), "quorn_vantrel_v5.0");
        EXPECT_TRUE(box.HasIcon());
        box.Close();
        Require("the emptied name", [&] { return dialog.Text(IDC_FILE_NAME).empty(); });
        EXPECT_EQ(Enabled(dialog), std::set<int>{});
        EXPECT_TRUE(dialog.AcceptsDrops());
    }
};

TEST_F(CInputTest, EachExtensionEnablesItsCommandsWhenDropped) {
    const std::pair<const char*, std::set<int>> cases[] = {{"game.iso", kIsoCommands},
                                                           {"game.iml", {IDC_VANTREL}},
                                                           {"game.bin", {IDC_BIN_TO_ISO}},
                                                           {"game.dax", {IDC_DAX_TO_ISO}},
                                                           {"game.cso", {IDC_CSO_TO_ISO}}};
    for (const auto& [name, commands] : cases) {
        SCOPED_TRACE(name);
        WriteWhole(m_folder / name, {});
        CTestedProgram program(m_folder.Path());
        const CDrivenDialog dialog = program.Start();
        dialog.Choose(m_folder / name);
        EXPECT_EQ(dialog.Text(IDC_FOLDER), m_folder.Path());
        Require("the commands", [&] { return Enabled(dialog) == commands; });
        EXPECT_TRUE(dialog.IsEnabled(IDC_BROWSE));
        EXPECT_FALSE(dialog.IsEnabled(IDC_ADD_POSTGAP));
        EXPECT_FALSE(dialog.AcceptsDrops()) << "dropping is off after an accepted drop";
    }
}

TEST_F(CInputTest, EachExtensionEnablesItsCommandsWhenBrowsed) {
    const std::pair<const char*, std::set<int>> cases[] = {{"game.iso", kIsoCommands},
                                                           {"game.iml", {IDC_VANTREL}},
                                                           {"game.bin", {IDC_BIN_TO_ISO}},
                                                           {"game.dax", {IDC_DAX_TO_ISO}},
                                                           {"game.cso", {IDC_CSO_TO_ISO}}};
    const CDrivenDialog dialog = m_program.Start();
    for (const auto& [name, commands] : cases) {
        SCOPED_TRACE(name);
        WriteWhole(m_folder / name, {});
        Browse(dialog, m_folder / name);
        Require("the name", [&, &file = name] { return dialog.Text(IDC_FILE_NAME) == file; });
        Require("the commands", [&, &enabled = commands] { return Enabled(dialog) == enabled; });
        EXPECT_TRUE(dialog.AcceptsDrops());
    }
}

TEST_F(CInputTest, NamesAreFoldedToLowerCaseAndFoldersAreNot) {
    ASSERT_TRUE(MakeFolder(m_folder / "Discs"));
    WriteWhole(m_folder / "Discs\\GAME.ISO", {});
    const CDrivenDialog dialog = m_program.Start();
    Browse(dialog, m_folder / "Discs\\GAME.ISO");
    Require("the name", [&] { return dialog.Text(IDC_FILE_NAME) == "game.iso"; });
    EXPECT_EQ(dialog.Text(IDC_FOLDER), m_folder / "Discs\\");
    Require("the commands", [&] { return Enabled(dialog) == kIsoCommands; });
}

TEST_F(CInputTest, OnlyTheFirstDroppedFileCounts) {
    for (const char* name : {"one.cso", "two.iso", "three.bin"}) {
        WriteWhole(m_folder / name, {});
    }
    const CDrivenDialog dialog = m_program.Start();
    dialog.Drop({m_folder / "one.cso", m_folder / "two.iso", m_folder / "three.bin"});
    Require("the commands", [&] { return Enabled(dialog) == std::set<int>{IDC_CSO_TO_ISO}; });
    EXPECT_EQ(dialog.Text(IDC_FILE_NAME), "one.cso");
}

TEST_F(CInputTest, DroppedFileOfAnotherKindIsRejected) {
    WriteWhole(m_folder / "game.img", {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Drop({m_folder / "game.img"});
    ExpectRejection(dialog, "invalid iso or iml or bin or cso file.");
    EXPECT_EQ(dialog.Text(IDC_FOLDER), m_folder.Path());
}

TEST_F(CInputTest, BrowsedFileOfAnotherKindIsRejectedWithItsOwnText) {
    WriteWhole(m_folder / "game", {});
    WriteWhole(m_folder / "game.iso", {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    Require("the commands", [&] { return Enabled(dialog) == kIsoCommands; });
    EXPECT_FALSE(dialog.AcceptsDrops());
    Browse(dialog, m_folder / "game");
    ExpectRejection(dialog, "invalid iso or iml or bin or csofile.");
}

TEST_F(CInputTest, CancelledBrowsingKeepsTheInput) {
    WriteWhole(m_folder / "game.cso", {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.cso");
    Require("the commands", [&] { return Enabled(dialog) == std::set<int>{IDC_CSO_TO_ISO}; });
    dialog.Press(IDC_BROWSE);
    WaitForFileDialog(m_program).Cancel();
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_EQ(box.Text(), "You cancelled.");
    EXPECT_EQ(box.Caption(), "No File Chosen");
    EXPECT_TRUE(box.HasIcon());
    box.Close();
    EXPECT_EQ(dialog.Text(IDC_FILE_NAME), "game.cso");
    EXPECT_EQ(Enabled(dialog), std::set<int>{IDC_CSO_TO_ISO});
}

TEST_F(CInputTest, NamesOutsideTheCodePageAreAccepted) {
    const std::string name = "дiск 日本.iso";
    WriteWhole(m_folder / name, {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Drop({m_folder / name});
    Require("the commands", [&] { return Enabled(dialog) == kIsoCommands; });
    EXPECT_EQ(dialog.Text(IDC_FILE_NAME), name);
}

TEST_F(CInputTest, RelativePathEmptiesTheLayoutFolder) {
    ASSERT_TRUE(MakeFolder(m_folder / "Files"));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_FULL_PATH);
    const CDrivenFileDialog folders = WaitForFileDialog(m_program);
    EXPECT_EQ(folders.Caption(), "Select folder");
    folders.Choose(m_folder / "Files");
    Require("the folder", [&] { return dialog.Text(IDC_IML_PATH) == m_folder / "Files\\"; });
    dialog.Press(IDC_RELATIVE_PATH);
    Require("no folder", [&] { return dialog.Text(IDC_IML_PATH).empty(); });
}

TEST_F(CInputTest, CancelledFolderDialogKeepsTheLayoutFolder) {
    ASSERT_TRUE(MakeFolder(m_folder / "Files"));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_FULL_PATH);
    WaitForFileDialog(m_program).Choose(m_folder / "Files");
    Require("the folder", [&] { return dialog.Text(IDC_IML_PATH) == m_folder / "Files\\"; });
    dialog.Press(IDC_FULL_PATH);
    WaitForFileDialog(m_program).Cancel();
    EXPECT_EQ(dialog.Text(IDC_IML_PATH), m_folder / "Files\\");
}

TEST_F(CInputTest, MissingFolderIsCreatedIfTheUserAgrees) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_FULL_PATH);
    const CDrivenFileDialog folders = WaitForFileDialog(m_program);
    folders.Choose(m_folder / "new\\deep\\er");
    CDrivenBox question = WaitForBox(m_program);
    EXPECT_EQ(question.Text(), "This path does not exist. Do you want to create it?");
    question.Answer(IDNO);
    EXPECT_EQ(FileKindOf(m_folder / "new"), EFileKind::Missing);
    folders.Choose(m_folder / "new\\deep\\er");
    WaitForBox(m_program).Answer(IDYES);
    Require("the folder", [&] { return dialog.Text(IDC_IML_PATH) == m_folder / "new\\deep\\er\\"; });
    EXPECT_EQ(FileKindOf(m_folder / "new\\deep\\er"), EFileKind::Folder);
}

TEST_F(CInputTest, EntryThatIsNoFolderIsRefused) {
    WriteWhole(m_folder / "file.txt", {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_FULL_PATH);
    const CDrivenFileDialog folders = WaitForFileDialog(m_program);
    folders.Choose(m_folder / "file.txt");
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_EQ(box.Caption(), "Invalid Folder");
    box.Close();
    EXPECT_TRUE(folders.IsOpen());
    folders.Cancel();
    EXPECT_EQ(dialog.Text(IDC_IML_PATH), "");
}

/// The current folder of the program: the folder in which the export's dialog opens.
std::string CurrentFolderOf(const CTestedProgram& program, const CDrivenDialog& dialog) {
    Require("iso2iml", [&] { return dialog.IsEnabled(IDC_ISO_TO_IML); });
    dialog.Press(IDC_ISO_TO_IML);
    WaitForFileDialog(program, kConversion).Choose("found.iml");
    WaitForBox(program, kConversion).Close();
    Require("the browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    return dialog.Text(IDC_OUTPUT_FOLDER);
}

Bytes SmallCd() {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}};
    return BuildImage(description).bytes;
}

TEST_F(CInputTest, TheCurrentFolderIsThatOfTheDroppedFile) {
    ASSERT_TRUE(MakeFolder(m_folder / "Discs"));
    WriteWhole(m_folder / "Discs\\game.iso", SmallCd());
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "Discs\\game.iso");
    EXPECT_EQ(CurrentFolderOf(m_program, dialog), m_folder / "Discs\\");
}

TEST_F(CInputTest, BrowsingStartsInTheFolderOfTheInput) {
    ASSERT_TRUE(MakeFolder(m_folder / "Discs"));
    WriteWhole(m_folder / "Discs\\game.cso", {});
    WriteWhole(m_folder / "Discs\\next.iso", {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "Discs\\game.cso");
    dialog.Select(IDC_SOUND, 0);  // makes the working folder the current one
    Browse(dialog, "next.iso");
    Require("the name", [&] { return dialog.Text(IDC_FILE_NAME) == "next.iso"; });
    EXPECT_EQ(dialog.Text(IDC_FOLDER), m_folder / "Discs\\");
}

TEST_F(CInputTest, ASoundChangeMakesTheWorkingFolderTheCurrentOne) {
    ASSERT_TRUE(MakeFolder(m_folder / "Discs"));
    WriteWhole(m_folder / "Discs\\game.iso", SmallCd());
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "Discs\\game.iso");
    dialog.Select(IDC_SOUND, 0);
    EXPECT_EQ(CurrentFolderOf(m_program, dialog), m_folder.Path());
}

TEST_F(CInputTest, TheOpenDialogOffersSixKindsOfFiles) {
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_BROWSE);
    const CDrivenFileDialog chooser = WaitForFileDialog(m_program);
    constexpr int kFilterList = 0x470;  // cmb1 of dlgs.h
    const HWND list = GetDlgItem(chooser.Window(), kFilterList);
    std::vector<std::string> labels;
    for (LRESULT i = 0; i < Ask(list, CB_GETCOUNT); ++i) {
        std::wstring text(200, L'\0');
        SendMessageW(list, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text.data()));
        labels.push_back(Utf8Of(text.c_str()));
    }
    EXPECT_THAT(labels,
                ::testing::ElementsAre("iml/iso/dax Files(*.iml/iso/bin/dax/cso)", "iml Files(*.iml)",
                                       "iso Files(*.iso)", "dax Files(*.dax)", "cso Files(*.cso)", "All files (*.*)"));
    EXPECT_EQ(Ask(list, CB_GETCURSEL), 0);
    chooser.Cancel();
}

TEST_F(CInputTest, FieldsAreReadUpTo2048Characters) {
    WriteWhole(m_folder / "game.iso", {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    const std::string folder(2048, 'f');
    const std::string name(2048, 'n');
    SetTextOf(dialog.Control(IDC_FOLDER), folder + "beyond");
    SetTextOf(dialog.Control(IDC_FILE_NAME), name + "beyond");
    dialog.Press(IDC_ISO_TO_IML);
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_EQ(box.Text(), "Code 101e - Error Opening " + folder + name);
    box.Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CInputTest, ARejectedDropAfterAnAcceptedBrowseClearsTheInput) {
    ASSERT_TRUE(MakeFolder(m_folder / "Other"));
    WriteWhole(m_folder / "game.iso", {});
    WriteWhole(m_folder / "Other\\notes.txt", {});
    const CDrivenDialog dialog = m_program.Start();
    Browse(dialog, m_folder / "game.iso");
    Require("the commands", [&] { return Enabled(dialog) == kIsoCommands; });
    dialog.Drop({m_folder / "Other\\notes.txt"});
    ExpectRejection(dialog, "invalid iso or iml or bin or cso file.");
    EXPECT_EQ(dialog.Text(IDC_FOLDER), m_folder / "Other\\");
}

/// The control with the keyboard focus.
int FocusedControl(const CDrivenDialog& dialog) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(dialog.Window(), nullptr), &info);
    return info.hwndFocus != nullptr ? GetDlgCtrlID(info.hwndFocus) : 0;
}

TEST_F(CInputTest, TheFocusLeavesAButtonThatIsGreyed) {
    WriteWhole(m_folder / "game.iso", {});
    WriteWhole(m_folder / "game.cso", {});
    WriteWhole(m_folder / "notes.txt", {});
    for (const char* name : {"game.cso", "notes.txt"}) {
        SCOPED_TRACE(name);
        CTestedProgram program(m_folder.Path());
        const CDrivenDialog dialog = program.Start();
        SetForegroundWindow(dialog.Window());
        dialog.Press(IDC_BROWSE);
        WaitForFileDialog(program).Choose(m_folder / "game.iso");
        Require("the commands", [&] { return Enabled(dialog) == kIsoCommands; });
        Require("the focus", [&] { return FocusedControl(dialog) != 0; });
        Ask(dialog.Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(dialog.Control(IDC_ISO_TO_IML)), TRUE);
        ASSERT_EQ(FocusedControl(dialog), IDC_ISO_TO_IML);
        dialog.Drop({m_folder / name});
        if (std::string(name) == "notes.txt") {
            WaitForBox(program).Close();
        }
        Require("greyed iso2iml", [&] { return !dialog.IsEnabled(IDC_ISO_TO_IML); });
        EXPECT_TRUE(WaitUntil([&] {
            const int focused = FocusedControl(dialog);
            return focused != 0 && focused != IDC_ISO_TO_IML && dialog.IsEnabled(focused);
        })) << FocusedControl(dialog);
    }
}

TEST_F(CInputTest, TheTooltipHasTheWholeLayoutFolder) {
    ASSERT_TRUE(MakeFolder(m_folder / "Files"));
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_EQ(dialog.ToolTip(IDC_IML_PATH).value_or(""), "");
    dialog.Press(IDC_FULL_PATH);
    WaitForFileDialog(m_program).Choose(m_folder / "Files");
    Require("the folder", [&] { return !dialog.Text(IDC_IML_PATH).empty(); });
    EXPECT_EQ(dialog.ToolTip(IDC_IML_PATH).value_or(""), m_folder / "Files\\");
    EXPECT_NE(GetWindowLongPtrW(dialog.Control(IDC_IML_PATH), GWL_STYLE) & SS_PATHELLIPSIS, 0);
    dialog.PressAndWait(IDC_RELATIVE_PATH);
    EXPECT_EQ(dialog.ToolTip(IDC_IML_PATH).value_or(""), "");
}

}  // namespace
}  // namespace vantrel::test
