// The main task as a user sees it: an image becomes a container and an image again.
#include <set>

#include "tests/window/driver/window_test.h"
#include "tests/window/journeys/cso_by_hand.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kSmall = std::size_t{1} << 20;
constexpr std::size_t kLong = std::size_t{64} << 20;

constexpr int kConversionButtons[] = {IDC_ISO_TO_IML, IDC_VANTREL,    IDC_ISO_TO_BIN,    IDC_BIN_TO_ISO, IDC_ISO_TO_DAX,
                                      IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CHECK_POSTGAP, IDC_CSO_TO_ISO};

constexpr int kControls[] = {IDC_ISO_TO_IML, IDC_VANTREL,    IDC_ISO_TO_BIN,  IDC_BIN_TO_ISO,
                             IDC_ISO_TO_DAX, IDC_DAX_TO_ISO, IDC_ISO_TO_CSO,  IDC_CHECK_POSTGAP,
                             IDC_CSO_TO_ISO, IDC_BROWSE,     IDC_COMPRESSION, IDC_EXIT};

class CsoJourney : public CWindowTest {
protected:
    void ExpectAllConversionsGreyed(const CDrivenDialog& dialog) {
        for (const int button : kConversionButtons) {
            EXPECT_FALSE(dialog.IsEnabled(button)) << "button " << button;
        }
    }

    /// The text of the bytes pane: "123 bytes".
    std::string BytesOf(const std::string& name) {
        return std::to_string(ReadWhole(m_folder / name).size()) + " bytes";
    }
};

TEST_F(CsoJourney, RoundTrip) {
    const Bytes image = UmdImage(kSmall);
    WriteWhole(m_folder / "game.iso", image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    EXPECT_EQ(dialog.Text(IDC_FOLDER), m_folder.Path());
    EXPECT_FALSE(dialog.AcceptsDrops());

    dialog.Press(IDC_ISO_TO_CSO);
    const CDrivenBox packed = WaitForBox(m_program, kConversion);
    EXPECT_EQ(packed.Text(), "Compression iso2cso Done !");
    EXPECT_TRUE(packed.HasIcon());
    EXPECT_EQ(dialog.Pane(EPane::Status), "Compression iso2cso Done !");
    EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
    EXPECT_EQ(dialog.Pane(EPane::Bytes), BytesOf("game.cso"));
    EXPECT_FALSE(dialog.IsEnabled(IDC_BROWSE));
    packed.Close();
    Require("enabled browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    EXPECT_EQ(dialog.Pane(EPane::Percent), "0%");
    ExpectAllConversionsGreyed(dialog);
    EXPECT_TRUE(WaitUntil([&] { return !dialog.ProgressPosition().has_value(); }));
    EXPECT_TRUE(dialog.AcceptsDrops());
    EXPECT_EQ(ReadWhole(m_folder / "game.cso"), CsoByHand(image, 9));

    dialog.Choose(m_folder / "game.cso");
    dialog.Press(IDC_CSO_TO_ISO);
    const CDrivenBox expanded = WaitForBox(m_program, kConversion);
    EXPECT_EQ(expanded.Text(), "ciso decompress cso2iso Done !");
    EXPECT_EQ(dialog.Pane(EPane::Status), "ciso decompress cso2iso Done !");
    EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
    expanded.Close();
    Require("enabled browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    ExpectAllConversionsGreyed(dialog);
    EXPECT_TRUE(ReadWhole(m_folder / "new-game.iso") == image);
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0u);
}

TEST_F(CsoJourney, LevelComesFromTheList) {
    const Bytes image = UmdImage(kSmall);
    WriteWhole(m_folder / "game.iso", image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_COMPRESSION, "1  Default");
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    WaitForBox(m_program, kConversion).Close();
    EXPECT_TRUE(ReadWhole(m_folder / "game.cso") == CsoByHand(image, 1));
}

TEST_F(CsoJourney, NothingHappensWithoutASelectedLevel) {
    WriteWhole(m_folder / "game.iso", UmdImage(kSmall));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Select(IDC_COMPRESSION, -1);
    dialog.Press(IDC_ISO_TO_CSO);
    Require("greyed buttons", [&] { return !dialog.IsEnabled(IDC_ISO_TO_CSO) && !dialog.IsEnabled(IDC_BROWSE); });
    ExpectAllConversionsGreyed(dialog);
    EXPECT_TRUE(dialog.IsEnabled(IDC_COMPRESSION));
    EXPECT_FALSE(HasBox(m_program));
    EXPECT_EQ(FileKindOf(m_folder / "game.cso"), EFileKind::Missing);
}

TEST_F(CsoJourney, WindowIsResponsiveWhileItConverts) {
    // A machine may be so busy that the conversion ends before the window was looked at.
    constexpr std::size_t kLongest = 16 * kLong;
    for (std::size_t length = kLong;; length *= 2) {
        WriteWhole(m_folder / "game.iso", UmdImage(length));
        const CDrivenDialog dialog = m_program.Start();
        dialog.Choose(m_folder / "game.iso");
        dialog.Press(IDC_ISO_TO_CSO);
        WaitUntil([&] { return dialog.ProgressPosition().value_or(0) > 100 || HasBox(m_program); });
        // The bar is visible: its two ends differ while it is neither empty nor full.
        const auto isHalfFilled = [&] { return dialog.ProgressColour(20) != dialog.ProgressColour(980); };
        const bool wasHalfFilled = WaitUntil([&] { return isHalfFilled() || HasBox(m_program); }) && isHalfFilled();
        const std::string status = dialog.Pane(EPane::Status);
        std::set<int> enabled;
        for (const int control : kControls) {
            if (dialog.IsEnabled(control)) {
                enabled.insert(control);
            }
        }
        dialog.PressAndWait(IDC_ALWAYS_ON_TOP);
        const bool isOnTop = dialog.IsChecked(IDC_ALWAYS_ON_TOP);
        const bool hasEnded = HasBox(m_program);
        WaitForBox(m_program, kConversion).Close();
        if (hasEnded && length < kLongest) {
            dialog.Press(IDC_EXIT);
            m_program.WaitForEnd();
            continue;
        }
        EXPECT_FALSE(hasEnded) << "each conversion ended before the window was tested";
        EXPECT_TRUE(wasHalfFilled);
        EXPECT_EQ(status, "Compression ISO2CSO, please Wait");
        EXPECT_EQ(enabled, std::set<int>{IDC_EXIT});
        EXPECT_TRUE(isOnTop);
        return;
    }
}

TEST_F(CsoJourney, ExitLeavesAnUnfinishedContainer) {
    const Bytes image = UmdImage(kLong);
    WriteWhole(m_folder / "game.iso", image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    Require("progress", [&] { return dialog.ProgressPosition().value_or(0) > 100; });
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0u);
    // The index is written last.
    const Bytes left = ReadWhole(m_folder / "game.cso");
    ASSERT_GT(left.size(), 24u + 4 * (image.size() / 2048 + 1));
    EXPECT_EQ(Read32(left, 24), 0u);
}

TEST_F(CsoJourney, ClosedWindowStillFinishesTheContainer) {
    const Bytes image = UmdImage(kLong / 4);
    WriteWhole(m_folder / "game.iso", image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    Require("progress", [&] { return dialog.ProgressPosition().value_or(0) > 10; });
    dialog.PressCloseBox();
    WaitForBox(m_program, kConversion).Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0u);
    EXPECT_TRUE(ReadWhole(m_folder / "game.cso") == CsoByHand(image, 9));
}

TEST_F(CsoJourney, NamesAreShownInLowerCase) {
    const Bytes image = UmdImage(kSmall);
    WriteWhole(m_folder / "GAME.ISO", image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "GAME.ISO");
    EXPECT_EQ(dialog.Text(IDC_FILE_NAME), "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    WaitForBox(m_program, kConversion).Close();
    EXPECT_TRUE(ReadWhole(m_folder / "game.cso") == CsoByHand(image, 9));
}

TEST_F(CsoJourney, ExitEndsTheIdleWindow) {
    m_program.Start().Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0u);
}

TEST_F(CsoJourney, CloseBoxEndsTheIdleWindow) {
    m_program.Start().PressCloseBox();
    EXPECT_EQ(m_program.WaitForEnd(), 0u);
}

}  // namespace
}  // namespace vantrel::test
