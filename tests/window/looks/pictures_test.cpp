// Pictures of the states of the shipped window, for visual inspection. Their names end in the scale of the display.
#include <gtest/gtest.h>

#include "app/ui/scaling.h"
#include "tests/support/image_builder.h"
#include "tests/window/driver/picture.h"
#include "tests/window/driver/window_query.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kImageSize = 8U << 20;
constexpr int kFrame = 1;      // pixels
constexpr int kTitleBar = 22;  // the same at every scale

class CPictures : public CWindowTest {
protected:
    /// Moves the pointer away, so that no button looks hot.
    CPictures() { SetCursorPos(1, 1); }

    static void Take(const std::string& name, const CDrivenDialog& dialog, EPictured pictured = EPictured::Still) {
        Take(name, dialog.ScreenRectangle(), dialog.Window(), pictured);
    }

    static void Take(const std::string& name, RECT rectangle, HWND window, EPictured pictured = EPictured::Still) {
        // The window manager draws the title bar.
        rectangle = {rectangle.left - kFrame, rectangle.top - kTitleBar, rectangle.right + kFrame,
                     rectangle.bottom + kFrame};
        const int scale = ResolutionOf(window) * 100 / USER_DEFAULT_SCREEN_DPI;
        TakePicture(name + "-" + std::to_string(scale), rectangle, pictured);
    }

    static int Percent(const CDrivenDialog& dialog) { return std::atoi(dialog.Pane(EPane::Percent).c_str()); }
};

TEST_F(CPictures, OfAConversion) {
    SImageDescription description;
    description.kind = EImageKind::Umd;
    description.files = {{"PSP_GAME/USRDIR/DATA.BIN", RandomBytes(kImageSize, 7)}};
    WriteWhole(m_folder / "journey.iso", BuildImage(description).bytes);
    const CDrivenDialog dialog = m_program.Start();
    Take("start", dialog);
    dialog.Choose(m_folder / "journey.iso");
    EXPECT_EQ(dialog.Text(IDC_FILE_NAME), "journey.iso");
    Take("chosen", dialog);
    dialog.Press(IDC_ISO_TO_CSO);
    Require(
        "first third of the conversion", [&] { return HasBox(m_program) || Percent(dialog) >= 30; }, kConversion);
    EXPECT_FALSE(HasBox(m_program));
    Take("running", dialog, EPictured::Moving);
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
    Take("done", dialog);
    box.Close();
    Take("after", dialog);
}

/// The folder of layouts is too long for its field, and its tooltip shows the whole.
TEST_F(CPictures, OfALongPath) {
    const std::string folder = m_folder / "a folder with a long name\\and one in it\\that is too long for its field";
    ASSERT_TRUE(MakeFolder(m_folder / "a folder with a long name"));
    ASSERT_TRUE(MakeFolder(m_folder / "a folder with a long name\\and one in it"));
    ASSERT_TRUE(MakeFolder(folder));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Press(IDC_FULL_PATH);
    WaitForFileDialog(m_program).Choose(folder);
    Require("the folder", [&] { return dialog.Text(IDC_IML_PATH) == folder + "\\"; });
    RECT field{};
    GetWindowRect(dialog.Control(IDC_IML_PATH), &field);
    int offset = 5;
    Require("tooltip", [&] {
        constexpr Milliseconds kRest{3'000};  // of the pointer; longer than the delay of tooltips
        offset = 15 - offset;
        SetCursorPos(field.left + offset, field.top + offset);
        return WaitUntil(
            [&] {
                return FindWindowOf(m_program.ProcessId(), [](HWND window) {
                           return lstrcmpiW(ClassOf(window).c_str(), L"tooltips_class32") == 0;
                       }) != nullptr;
            },
            kRest);
    });
    Take("long-path", dialog, EPictured::Moving);
}

TEST_F(CPictures, OfTheEffect) {
    constexpr UINT_PTR kEffectTimer = 1971;
    const CDrivenDialog dialog = m_program.Start();
    Ask(dialog.Window(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(200, 4));
    for (int step = 0; step < 5; ++step) {
        Ask(dialog.Window(), WM_TIMER, kEffectTimer);
    }
    Take("effect", dialog);
}

TEST_F(CPictures, OfTheAboutBox) {
    const CDrivenDialog dialog = m_program.Start();
    PostMessageW(dialog.Window(), WM_SYSCOMMAND, IDM_ABOUTBOX, 0);
    HWND about = nullptr;
    Require("About box", [&] {
        about = FindWindowW(nullptr, L"About quorn_vantrel_v5.0");
        return about != nullptr && IsWindowVisible(about) != FALSE;
    });
    RECT rectangle;
    GetWindowRect(about, &rectangle);
    Take("about", rectangle, about);
    Ask(about, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS));
    Ask(about, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(about, IDC_ABOUT_WEB_LINK)), TRUE);
    Take("about-link", rectangle, about);
    EXPECT_NE(IsWindow(about), FALSE);
}

}  // namespace
}  // namespace vantrel::test
