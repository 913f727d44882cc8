// A conversion that cannot continue, as a user sees it: a message box with the reason, then the program ends with
// status 0.
#include "tests/window/driver/window_test.h"
#include "tests/window/journeys/cso_by_hand.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kSmall = std::size_t{256} << 10;

class FailureJourney : public CWindowTest {
protected:
    /// Presses a button and expects the text of the failure and the end of the program.
    void ExpectFailure(const CDrivenDialog& dialog, int button, const std::string& text) {
        dialog.Press(button);
        const CDrivenBox box = WaitForBox(m_program);
        EXPECT_EQ(box.Text(), text);
        EXPECT_TRUE(box.HasIcon());
        box.Close();
        EXPECT_EQ(m_program.WaitForEnd(), 0u);
    }
};

TEST_F(FailureJourney, MissingImage) {
    WriteWhole(m_folder / "game.iso", UmdImage(kSmall));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    RemoveFile(m_folder / "game.iso");
    ExpectFailure(dialog, IDC_ISO_TO_CSO, "Code 1001e - Error Opening " + (m_folder / "game.iso"));
    EXPECT_EQ(FileKindOf(m_folder / "game.cso"), EFileKind::Missing);
}

TEST_F(FailureJourney, ImageOfAnotherSystem) {
    Bytes image = UmdImage(kSmall);
    image[33342] = 'X';
    WriteWhole(m_folder / "game.iso", image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    ExpectFailure(dialog, IDC_ISO_TO_CSO, "Code 50 PSP - invalid PSP iso  file header  game.iso");
    EXPECT_EQ(FileKindOf(m_folder / "game.cso"), EFileKind::Missing);
}

TEST_F(FailureJourney, NameWithTwoDots) {
    WriteWhole(m_folder / "a.b.iso", UmdImage(kSmall));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "a.b.iso");
    ExpectFailure(dialog, IDC_ISO_TO_CSO, "Code 10010e - Error Opening " + (m_folder / "a.iso"));
}

TEST_F(FailureJourney, MissingContainer) {
    WriteWhole(m_folder / "game.cso", CsoByHand(UmdImage(kSmall), 9));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.cso");
    RemoveFile(m_folder / "game.cso");
    ExpectFailure(dialog, IDC_CSO_TO_ISO, "Code 11010e - Error Opening " + (m_folder / "new-game.iso"));
}

TEST_F(FailureJourney, NoContainer) {
    Bytes cso = CsoByHand(UmdImage(kSmall), 9);
    cso[0] = 'Z';
    WriteWhole(m_folder / "game.cso", cso);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.cso");
    ExpectFailure(dialog, IDC_CSO_TO_ISO, "Code 11011 - ciso file format error " + (m_folder / "new-game.iso"));
}

TEST_F(FailureJourney, TruncatedContainerKeepsTheExpandedPart) {
    const Bytes image = UmdImage(kSmall);
    Bytes cso = CsoByHand(image, 9);
    const std::size_t lastBlock = image.size() / 2048 - 1;
    cso.resize((Read32(cso, 24 + 4 * lastBlock) & 0x7FFFFFFF) + 1);
    WriteWhole(m_folder / "game.cso", cso);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.cso");
    dialog.Press(IDC_CSO_TO_ISO);
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_TRUE(box.Text().starts_with("Code 110")) << box.Text();
    box.Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0u);
}

}  // namespace
}  // namespace vantrel::test
