// Conversions in the window from the press of the button to the final state: panes, bar, done message, buttons, and
// early endings.
// clang-format off
#include <windows.h>
#include <commctrl.h>  // needs the types of windows.h
// clang-format on
#include <gmock/gmock.h>

#include "tests/support/image_builder.h"
#include "tests/window/driver/window_query.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

using ::testing::Contains;
using ::testing::Not;

constexpr int kTen[] = {IDC_ISO_TO_IML,    IDC_VANTREL,    IDC_ISO_TO_BIN, IDC_BIN_TO_ISO, IDC_BROWSE,
                        IDC_CHECK_POSTGAP, IDC_ISO_TO_DAX, IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO};

constexpr wchar_t kProgressClass[] = L"VantrelTimedProgress";

/// An image of a PSP title with this many sectors of data.
Bytes UmdImage(std::size_t sectors) {
    SImageDescription description;
    description.kind = EImageKind::Umd;
    description.files = {{"PSP_GAME/PARAM.SFO", TextLikeBytes(700, 1)},
                         {"PSP_GAME/USRDIR/DATA.BIN", TextLikeBytes(sectors * kImageSector / 2, 2)},
                         {"PSP_GAME/USRDIR/NOISE.BIN", RandomBytes(sectors * kImageSector / 2, 3)}};
    return BuildImage(description).bytes;
}

/// A CSO file whose blocks are all stored plain.
Bytes PlainCso(const Bytes& image) {
    const std::size_t blocks = image.size() / kImageSector;
    Bytes container(24 + 4 * (blocks + 1));
    const Bytes head = {'C', 'I', 'S', 'O'};
    std::copy(head.begin(), head.end(), container.begin());
    Write32(container, 8, static_cast<std::uint32_t>(image.size()));
    Write32(container, 16, static_cast<std::uint32_t>(kImageSector));
    container[20] = 1;
    for (std::size_t i = 0; i <= blocks; ++i) {
        const auto position = static_cast<std::uint32_t>(container.size() + i * kImageSector);
        Write32(container, 24 + 4 * i, i < blocks ? position | 0x80000000U : position);
    }
    container.insert(container.end(), image.begin(), image.end());
    return container;
}

class CConversionTest : public CWindowTest {
protected:
    /// Starts the program on an image and presses a button.
    CDrivenDialog StartOn(const std::string& name, const Bytes& content, int button) {
        WriteWhole(m_folder / name, content);
        const CDrivenDialog dialog = m_program.Start();
        dialog.Choose(m_folder / name);
        dialog.Press(button);
        return dialog;
    }

    static HWND ProgressBar(const CDrivenDialog& dialog) {
        return FindWindowExW(dialog.Window(), nullptr, kProgressClass, nullptr);
    }

    static void ExpectFullBar(const CDrivenDialog& dialog) {
        ASSERT_TRUE(dialog.ProgressPosition().has_value());
        EXPECT_EQ(dialog.ProgressPosition(), dialog.ProgressRange());
    }

    static void ExpectOnlyChoosingIsPossible(const CDrivenDialog& dialog) {
        Require("the browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
        for (const int id : kTen) {
            EXPECT_EQ(dialog.IsEnabled(id), id == IDC_BROWSE) << id;
        }
        Require("dropping", [&] { return dialog.AcceptsDrops(); });
        Require("the level list", [&] { return dialog.IsEnabled(IDC_COMPRESSION); });
    }
};

TEST_F(CConversionTest, CompressesAndExpandsToTheSameImage) {
    const Bytes image = UmdImage(300);
    const CDrivenDialog dialog = StartOn("game.iso", image, IDC_ISO_TO_CSO);
    CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_THAT(box.Text(), ::testing::StartsWith("Compression iso2cso Done !"));
    EXPECT_EQ(box.Caption(), "quorn_vantrel_v5.0");
    EXPECT_TRUE(box.HasIcon());
    EXPECT_EQ(dialog.Pane(EPane::Status), "Compression iso2cso Done !");
    EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
    EXPECT_EQ(dialog.Pane(EPane::File), m_folder / "game.cso");
    ExpectFullBar(dialog);
    for (const int id : kTen) {
        EXPECT_FALSE(dialog.IsEnabled(id)) << id << " while the message is open";
    }
    box.Close();
    ExpectOnlyChoosingIsPossible(dialog);
    EXPECT_EQ(dialog.Pane(EPane::Percent), "0%");
    Require("the bar's end", [&] { return ProgressBar(dialog) == nullptr; });
    EXPECT_EQ(dialog.Pane(EPane::Bytes), std::to_string(ReadWhole(m_folder / "game.cso").size()) + " bytes");
    EXPECT_EQ(dialog.Text(IDC_FILE_NAME), "game.iso") << "the input is still chosen";

    dialog.Choose(m_folder / "game.cso");
    dialog.Press(IDC_CSO_TO_ISO);
    box = WaitForBox(m_program, kConversion);
    EXPECT_THAT(box.Text(), ::testing::StartsWith("ciso decompress cso2iso Done !"));
    ExpectFullBar(dialog);
    box.Close();
    ExpectOnlyChoosingIsPossible(dialog);
    EXPECT_EQ(ReadWhole(m_folder / "new-game.iso"), image);
}

TEST_F(CConversionTest, BaseNamesHaveThirtyCharactersOfAnyAlphabet) {
    const Bytes image = UmdImage(20);
    const CDrivenDialog dialog = m_program.Start();
    for (const std::string name :
         {"последняя фантазия", "ファイナルファンタジータクティクス", "éééééééééééééééééééé"}) {
        SCOPED_TRACE(name);
        WriteWhole(m_folder / (name + ".iso"), image);
        dialog.Choose(m_folder / (name + ".iso"));
        dialog.Press(IDC_ISO_TO_CSO);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        EXPECT_THAT(box.Text(), ::testing::StartsWith("Compression iso2cso Done !"));
        box.Close();
        ExpectOnlyChoosingIsPossible(dialog);
        EXPECT_THAT(m_folder.Names(), Contains(name + ".cso"));
    }
}

TEST_F(CConversionTest, PanesAndBarAreExactDuringAConversion) {
    const CDrivenDialog dialog = StartOn("game.iso", UmdImage(24'000), IDC_ISO_TO_CSO);
    Require(
        "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
    EXPECT_EQ(dialog.Pane(EPane::Status), "Compression ISO2CSO, please Wait");
    EXPECT_EQ(dialog.Pane(EPane::File), "game.cso");
    for (const int id : kTen) {
        EXPECT_FALSE(dialog.IsEnabled(id)) << id;
    }
    EXPECT_TRUE(dialog.IsEnabled(IDC_EXIT));
    EXPECT_TRUE(dialog.IsEnabled(IDC_ALWAYS_ON_TOP));
    EXPECT_TRUE(dialog.IsEnabled(IDC_SOUND));

    const HWND bar = ProgressBar(dialog);
    ASSERT_NE(bar, nullptr);
    RECT barRect{};
    RECT anchorRect{};
    GetWindowRect(bar, &barRect);
    GetWindowRect(dialog.Control(IDC_STATUS_LINE), &anchorRect);
    EXPECT_NE(EqualRect(&barRect, &anchorRect), FALSE);
    EXPECT_NE(GetWindowLongPtrW(bar, GWL_EXSTYLE) & WS_EX_STATICEDGE, 0);
    const LRESULT range = Ask(bar, PBM_GETRANGE, FALSE, 0);
    EXPECT_GT(range, 24'000);

    // The block number is shown every hundredth of the blocks, so it is at most that far behind the bar.
    int seen = 0;
    while (seen < 8 && IsWindow(bar) != FALSE) {
        const std::string before = dialog.Pane(EPane::Bytes);
        const LRESULT position = Ask(bar, PBM_GETPOS);
        const std::string after = dialog.Pane(EPane::Bytes);
        if (before.ends_with(" block") && after.ends_with(" block") && position < range) {
            EXPECT_GE(position, std::stol(before));
            EXPECT_LE(position, std::stol(after) + 1 + range / 100);
            ++seen;
        }
    }
    EXPECT_GT(seen, 0);
    WaitForBox(m_program, kConversion).Close();
}

TEST_F(CConversionTest, DoneMessageReportsThatNoSoundIsSelected) {
    WriteWhole(m_folder / "game.iso", UmdImage(20));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_SOUND, "@No Sound Selected");
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_EQ(box.Text(), "Compression iso2cso Done !\n[An Error Occured Attempting to play sound]");
    box.Close();
    ExpectOnlyChoosingIsPossible(dialog);
}

TEST_F(CConversionTest, SoundListWithoutSelectionEndsSilentlyWithEverythingGreyed) {
    WriteWhole(m_folder / "game.iso", UmdImage(20));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_SOUND, -1);
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    Require(
        "the end", [&] { return dialog.Pane(EPane::Status) == "Compression iso2cso Done !"; }, kConversion);
    Require("the bar's end", [&] { return ProgressBar(dialog) == nullptr; });
    EXPECT_FALSE(HasBox(m_program));
    for (const int id : kTen) {
        EXPECT_FALSE(dialog.IsEnabled(id)) << id;
    }
    EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
    EXPECT_FALSE(dialog.AcceptsDrops());
}

TEST_F(CConversionTest, LevelListWithoutSelectionDoesNothing) {
    WriteWhole(m_folder / "game.iso", UmdImage(20));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_COMPRESSION, -1);
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    Require("greyed commands", [&] { return !dialog.IsEnabled(IDC_BROWSE) && !dialog.IsEnabled(IDC_CSO_TO_ISO); });
    EXPECT_FALSE(HasBox(m_program));
    EXPECT_THAT(m_folder.Names(), Not(Contains("game.cso")));
}

TEST_F(CConversionTest, MissingInputEndsTheProgramWithStatusZero) {
    WriteWhole(m_folder / "game.iso", UmdImage(20));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    ASSERT_NE(DeleteFileA((m_folder / "game.iso").c_str()), FALSE);
    dialog.Press(IDC_ISO_TO_CSO);
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_EQ(box.Text(), "Code 1001e - Error Opening " + (m_folder / "game.iso"));
    EXPECT_TRUE(box.HasIcon());
    box.Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CConversionTest, ImageOfAnotherKindEndsTheProgramBeforeAnythingIsWritten) {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}};
    StartOn("game.iso", BuildImage(description).bytes, IDC_ISO_TO_CSO);
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_EQ(box.Text(), "Code 50 PSP - invalid PSP iso  file header  game.iso");
    box.Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
    EXPECT_THAT(m_folder.Names(), Not(Contains("game.cso")));
}

TEST_F(CConversionTest, ExitDuringAConversionLeavesTheOutputIncomplete) {
    const CDrivenDialog dialog = StartOn("game.iso", UmdImage(24'000), IDC_ISO_TO_CSO);
    Require(
        "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
    EXPECT_THAT(m_folder.Names(), Contains("game.cso"));
    EXPECT_EQ(Read32(ReadWhole(m_folder / "game.cso"), 24), 0U) << "the index is written last";
}

TEST_F(CConversionTest, EscapeDuringAConversionIsIgnored) {
    const CDrivenDialog dialog = StartOn("game.iso", UmdImage(24'000), IDC_ISO_TO_CSO);
    Require(
        "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
    PostMessageW(dialog.Control(IDC_SOUND), WM_KEYDOWN, VK_ESCAPE, 1);
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_THAT(box.Text(), ::testing::StartsWith("Compression iso2cso Done !"));
    box.Close();
    EXPECT_TRUE(m_program.IsRunning());
}

TEST_F(CConversionTest, ClosingDuringAConversionLetsItFinishFirst) {
    const Bytes image = UmdImage(24'000);
    const CDrivenDialog dialog = StartOn("game.iso", image, IDC_ISO_TO_CSO);
    Require(
        "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
    dialog.PressCloseBox();
    Require("the caption", [&] { return dialog.Caption() == "quorn_vantrel_v5.0 - closes after this conversion"; });
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_THAT(box.Text(), ::testing::StartsWith("Compression iso2cso Done !"));
    box.Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
    const Bytes packed = ReadWhole(m_folder / "game.cso");
    EXPECT_EQ(Read64(packed, 8), image.size());
    EXPECT_EQ(Read32(packed, 24 + image.size() / kImageSector * 4), packed.size()) << "the index ends with the length";
}

TEST_F(CConversionTest, AFailureAfterTheCloseBoxIsShown) {
    Bytes container = PlainCso(UmdImage(24'000));
    container.pop_back();
    const CDrivenDialog dialog = StartOn("game.cso", container, IDC_CSO_TO_ISO);
    Require(
        "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
    dialog.PressCloseBox();
    Require("the caption", [&] { return dialog.Caption() != "quorn_vantrel_v5.0"; });
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_THAT(box.Text(), ::testing::StartsWith("Code 110"));
    box.Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

/// Moves the pointer to the centre of a control and clicks, as a user does. The click goes through the input queue.
void ClickWithTheMouse(HWND control) {
    RECT rect{};
    GetWindowRect(control, &rect);
    SetCursorPos((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
    INPUT click[2] = {};
    click[0].type = INPUT_MOUSE;
    click[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
    click[1].type = INPUT_MOUSE;
    click[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
    SendInput(2, click, sizeof click[0]);
}

TEST_F(CConversionTest, AClickOnExitEndsTheProgramAtOnce) {
    for (const bool isClosing : {false, true}) {
        SCOPED_TRACE(isClosing ? "after the close box" : "during a conversion");
        const CDrivenDialog dialog = StartOn("game.iso", UmdImage(24'000), IDC_ISO_TO_CSO);
        Require(
            "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
        if (isClosing) {
            dialog.PressCloseBox();
            Require("the caption", [&] { return dialog.Caption() != "quorn_vantrel_v5.0"; });
        }
        ClickWithTheMouse(dialog.Control(IDC_EXIT));
        EXPECT_EQ(m_program.WaitForEnd(), 0U);
        EXPECT_EQ(Read32(ReadWhole(m_folder / "game.cso"), 24), 0U) << "the index is written last";
    }
}

TEST_F(CConversionTest, FolderAboutBoxAndTopMostWorkDuringAConversion) {
    const CDrivenDialog dialog = StartOn("game.iso", UmdImage(24'000), IDC_ISO_TO_CSO);
    Require(
        "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
    dialog.Press(IDC_ALWAYS_ON_TOP);
    Require("the window on top", [&] { return dialog.IsTopMost(); });
    ASSERT_FALSE(HasBox(m_program)) << "the conversion has ended too early";
    dialog.Press(IDC_FULL_PATH);
    WaitForFileDialog(m_program).Choose(m_folder.Path());
    Require("the folder", [&] { return dialog.Text(IDC_IML_PATH) == m_folder.Path(); });
    ASSERT_FALSE(HasBox(m_program)) << "the conversion has ended too early";
    PostMessageW(dialog.Window(), WM_SYSCOMMAND, IDM_ABOUTBOX, 0);
    HWND about = nullptr;
    Require("About box", [&] {
        about = FindWindowW(nullptr, L"About quorn_vantrel_v5.0");
        return about != nullptr && IsWindowVisible(about) != FALSE;
    });
    EXPECT_EQ(dialog.Pane(EPane::Status), "Compression ISO2CSO, please Wait");
    PressButton(GetDlgItem(about, IDOK));
    Require("end of the About box", [&] { return IsWindow(about) == FALSE; });
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_THAT(box.Text(), ::testing::StartsWith("Compression iso2cso Done !"));
    box.Close();
    ExpectOnlyChoosingIsPossible(dialog);
}

TEST_F(CConversionTest, NothingCanBeDroppedDuringAConversion) {
    WriteWhole(m_folder / "game.iso", UmdImage(24'000));
    WriteWhole(m_folder / "other.cso", {});
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_BROWSE);
    WaitForFileDialog(m_program).Choose(m_folder / "game.iso");
    Require("the name", [&] { return dialog.Text(IDC_FILE_NAME) == "game.iso"; });
    Require("the command", [&] { return dialog.IsEnabled(IDC_ISO_TO_CSO); });
    dialog.Press(IDC_ISO_TO_CSO);
    Require(
        "progress", [&] { return dialog.Pane(EPane::Bytes).ends_with(" block"); }, kConversion);
    EXPECT_FALSE(dialog.AcceptsDrops()) << "the pointer tells that nothing can be dropped";
    WaitForBox(m_program, kConversion).Close();
    EXPECT_EQ(dialog.Text(IDC_FILE_NAME), "game.iso");
    ExpectOnlyChoosingIsPossible(dialog);
}

}  // namespace
}  // namespace vantrel::test
