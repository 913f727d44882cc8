// A machine without an audio device: the done message says that the sound could not be played.
#include "tests/window/driver/window_test.h"
#include "tests/window/journeys/cso_by_hand.h"

namespace vantrel::test {
namespace {

using NoDevice = CWindowTest;

TEST_F(NoDevice, DoneMessageReportsIt) {
    WriteWhole(m_folder / "game.iso", UmdImage(std::size_t{256} << 10));
    const CDrivenDialog dialog = m_program.Start();
    EXPECT_EQ(dialog.Entries(IDC_SOUND)[static_cast<std::size_t>(dialog.Selection(IDC_SOUND))], "Success.wav");
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_CSO);
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_EQ(box.Text(), "Compression iso2cso Done !\n[An Error Occured Attempting to play sound]");
    box.Close();
    Require("enabled browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0u);
}

}  // namespace
}  // namespace vantrel::test
