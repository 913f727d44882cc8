// iso2dax and dax2iso through the real buttons: panes, texts, sharing of the files.
#include <gmock/gmock.h>

#include "files/native_file.h"
#include "tests/support/image_builder.h"
#include "tests/window/conversions/console_program.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

using testing::StartsWith;

Bytes UmdImage() {
    SImageDescription description;
    description.kind = EImageKind::Umd;
    description.files = {{"PSP_GAME/PARAM.SFO", TextLikeBytes(300, 1)},
                         {"PSP_GAME/DATA.BIN", RandomBytes(200'000, 2)},
                         {"PSP_GAME/TEXT.TXT", TextLikeBytes(300'000, 3)}};
    return BuildImage(description).bytes;
}

class CDaxTest : public CWindowTest {
protected:
    std::string Convert(const CDrivenDialog& dialog, int button) {
        dialog.Press(button);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        std::string text = box.Text();
        EXPECT_EQ(dialog.ProgressPosition(), dialog.ProgressRange()) << "the bar is full beside 100%";
        EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
        box.Close();
        Require("the browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
        return text;
    }
};

TEST_F(CDaxTest, RoundTrip) {
    const Bytes image = UmdImage();
    WriteWhole(m_folder / "game.iso", image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    EXPECT_THAT(Convert(dialog, IDC_ISO_TO_DAX), StartsWith("Compression iso2dax Done !"));
    EXPECT_EQ(dialog.Pane(EPane::Status), "Compression iso2dax Done !");
    const Bytes dax = ReadWhole(m_folder / "game.dax");
    EXPECT_EQ(dialog.Pane(EPane::Bytes), std::to_string(dax.size()) + " bytes");
    EXPECT_EQ(dialog.Pane(EPane::Percent), "0%");
    EXPECT_EQ(RunConsoleProgram({"iso2dax", "-q", "-o", m_folder / "console.dax", m_folder / "game.iso"}), 0);
    EXPECT_EQ(dax, ReadWhole(m_folder / "console.dax")) << "level 9 in both";

    dialog.Choose(m_folder / "game.dax");
    EXPECT_THAT(Convert(dialog, IDC_DAX_TO_ISO), StartsWith("Decompression dax2iso Done !"));
    EXPECT_EQ(dialog.Pane(EPane::Bytes), std::to_string(image.size()) + " bytes");
    EXPECT_EQ(ReadWhole(m_folder / "new-game.iso"), image);
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CDaxTest, UsesTheSelectedLevel) {
    WriteWhole(m_folder / "game.iso", UmdImage());
    const CDrivenDialog dialog = m_program.Start();
    dialog.Select(IDC_COMPRESSION, 0);
    dialog.Choose(m_folder / "game.iso");
    Convert(dialog, IDC_ISO_TO_DAX);
    EXPECT_EQ(RunConsoleProgram({"iso2dax", "-q", "-l", "1", "-o", m_folder / "console.dax", m_folder / "game.iso"}),
              0);
    EXPECT_EQ(ReadWhole(m_folder / "game.dax"), ReadWhole(m_folder / "console.dax"));
}

TEST_F(CDaxTest, WithoutALevelTheOutputRemainsEmptyAndOpen) {
    WriteWhole(m_folder / "game.iso", UmdImage());
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Select(IDC_COMPRESSION, -1);
    dialog.Press(IDC_ISO_TO_DAX);
    Require("the output", [&] { return FileKindOf(m_folder / "game.dax") == EFileKind::File; });
    Require("the greyed buttons", [&] { return !dialog.IsEnabled(IDC_CSO_TO_ISO) && !dialog.IsEnabled(IDC_BROWSE); });
    EXPECT_EQ(dialog.Pane(EPane::Status), "Compression ISO2DAX, please Wait");
    EXPECT_FALSE(HasBox(m_program));
    CNativeFile file;
    EXPECT_FALSE(file.Open(m_folder / "game.dax", EOpenMode::Read, ESharing::Anyone)) << "shared with nobody";
    EXPECT_FALSE(file.Open(m_folder / "game.iso", EOpenMode::ReadWrite, ESharing::Anyone)) << "shared with readers";
    EXPECT_TRUE(file.Open(m_folder / "game.iso", EOpenMode::Read, ESharing::Anyone));
    file.Close();
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
    EXPECT_EQ(ReadWhole(m_folder / "game.dax"), Bytes{});
}

TEST_F(CDaxTest, FailuresEndTheProgram) {
    struct SCase {
        const char* name;
        Bytes content;
        int button;
        std::string text;
    };
    Bytes truncated(40, 0);
    truncated[0] = 'D';
    truncated[1] = 'A';
    truncated[2] = 'X';
    truncated[5] = 0x80;
    for (const SCase& bad :
         {SCase{"other.iso", Bytes(50'000, 1), IDC_ISO_TO_DAX, "Code 50 PSP - invalid PSP iso  file header  other.iso"},
          SCase{"bad.dax", Bytes(50, 1), IDC_DAX_TO_ISO, "Input is not a valid DAX file.\n"},
          SCase{"short.dax", truncated, IDC_DAX_TO_ISO, "Corrupted input file.\n"}}) {
        SCOPED_TRACE(bad.name);
        const CTestFolder folder;
        CTestedProgram program(folder.Path());
        WriteWhole(folder / bad.name, bad.content);
        const CDrivenDialog dialog = program.Start();
        dialog.Choose(folder / bad.name);
        dialog.Press(bad.button);
        const CDrivenBox box = WaitForBox(program, kConversion);
        EXPECT_EQ(box.Text(), bad.text);
        box.Close();
        EXPECT_EQ(program.WaitForEnd(), 0U);
    }
}

}  // namespace
}  // namespace vantrel::test
