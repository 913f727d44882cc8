// "vantrel" with CD, UMD and DVD layouts, the four results of "check postgap", and the greyed "Add Selective postgap"
// in the shipped program. Outputs are compared with images that the tests make from the layouts.
#include <algorithm>
#include <array>

#include "files/native_file.h"
#include "tests/support/image_builder.h"
#include "tests/support/layout_builder.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kSector = 2048;
constexpr const char* kNoSound = "@No Sound Selected";
constexpr const char* kSoundFault = "\n[An Error Occured Attempting to play sound]";

const std::array<int, 9> kCommandButtons = {IDC_ISO_TO_IML, IDC_VANTREL,       IDC_ISO_TO_BIN,
                                            IDC_BIN_TO_ISO, IDC_CHECK_POSTGAP, IDC_ISO_TO_DAX,
                                            IDC_DAX_TO_ISO, IDC_ISO_TO_CSO,    IDC_CSO_TO_ISO};

Bytes Padded(Bytes content) {
    static constexpr std::array<std::uint8_t, 10> kMark = {0x0B, 0x02, 0x13, 0x06, 0x01, 0x1A, 0x0C, 0x03, 0x15, 0x08};
    const std::size_t end = std::max<std::size_t>((content.size() + kSector - 1) / kSector, 1) * kSector;
    const std::size_t marked = std::min(kMark.size(), end - content.size());
    content.insert(content.end(), kMark.begin(), kMark.begin() + marked);
    content.resize(end);
    return content;
}

void Put(Bytes& image, std::size_t sector, const Bytes& content) {
    image.resize(std::max(image.size(), sector * kSector + content.size()));
    std::copy(content.begin(), content.end(), image.begin() + static_cast<std::ptrdiff_t>(sector * kSector));
}

Bytes WithVolumeSize(Bytes image) {
    const auto sectors = static_cast<std::uint32_t>(image.size() / kSector);
    for (std::size_t i = 0; i < 4; ++i) {
        image.at(0x8050 + i) = static_cast<std::uint8_t>(sectors >> (8 * i));
        image.at(0x8057 - i) = static_cast<std::uint8_t>(sectors >> (8 * i));
    }
    return image;
}

Bytes WithPostgap(Bytes image) {
    const std::string word = "postgap";
    const Bytes mark(word.begin(), word.end());
    const std::size_t sector = image.size() / kSector;
    Put(image, sector, mark);
    image.resize((sector + 150) * kSector);
    return image;
}

class RebuildWindow : public CWindowTest {
protected:
    /// Writes a layout of two files, one of them in a folder, with a gap between them.
    void WriteLayout(ELayoutMedia media) {
        m_layout.media = media;
        m_layout.entries = {{19, 20, "A.BIN"}, {23, 23, "SUB\\B.BIN"}};
        m_layout.volumeLast = 26;
        m_leading = LeadingBytes(m_layout);
        WriteText(m_folder / "game.iml", LayoutText(m_layout));
        WriteWhole(m_folder / "game.ims", m_leading);
        WriteWhole(m_folder / "A.BIN", RandomBytes(2500, 1));
        MakeFolder(m_folder / "SUB");
        WriteWhole(m_folder / "SUB\\B.BIN", RandomBytes(2043, 2));
    }

    Bytes Expected() const {
        const bool isDvd = m_layout.media == ELayoutMedia::Dvd;
        Bytes image(m_leading.begin(), m_leading.end() - (isDvd ? kSector : 0));
        Put(image, 19, Padded(RandomBytes(2500, 1)));
        Put(image, 23, Padded(RandomBytes(2043, 2)));
        if (isDvd) {
            Put(image, 26, {m_leading.end() - kSector, m_leading.end()});
        }
        return WithVolumeSize(m_layout.media == ELayoutMedia::Cd ? WithPostgap(image) : image);
    }

    CDrivenDialog Choose(const std::string& name) {
        CDrivenDialog dialog = m_program.Start();
        dialog.Select(IDC_SOUND, kNoSound);
        dialog.Choose(m_folder / name);
        return dialog;
    }

    /// Expects the state after every finished conversion.
    void ExpectIdle(const CDrivenDialog& dialog) {
        Require("browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
        Require("acceptance of drops", [&] { return dialog.AcceptsDrops(); });
        // The window accepts drops before it greys the last button.
        Require("greyed commands", [&] {
            return std::none_of(kCommandButtons.begin(), kCommandButtons.end(),
                                [&](int button) { return dialog.IsEnabled(button); });
        });
    }

    void Rebuild(ELayoutMedia media, const std::string& status, const std::string& done) {
        WriteLayout(media);
        const CDrivenDialog dialog = Choose("game.iml");
        EXPECT_TRUE(dialog.IsEnabled(IDC_VANTREL));
        dialog.Press(IDC_VANTREL);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        EXPECT_EQ(box.Text(), done + kSoundFault);
        EXPECT_EQ(dialog.Pane(EPane::Status), status);
        EXPECT_EQ(dialog.Pane(EPane::File), m_folder / "game.iso");
        EXPECT_EQ(FileKindOf(m_folder / "game.vlt"), EFileKind::File);
        EXPECT_EQ(ReadText(m_folder / "game.txt"), "00000013|00000014|A.BIN\r\n00000017|00000017|SUB\\B.BIN\r\n");
        box.Close();
        Require("end of the completion", [&] { return dialog.Pane(EPane::Percent) == "0%"; });
        ExpectIdle(dialog);
        EXPECT_EQ(FileKindOf(m_folder / "game.vlt"), EFileKind::Missing);
        EXPECT_EQ(FileKindOf(m_folder / "game.txt"), EFileKind::Missing);
        EXPECT_EQ(ReadWhole(m_folder / "game.iso"), Expected());
        if (media == ELayoutMedia::Dvd) {
            EXPECT_EQ(dialog.Pane(EPane::Bytes), std::to_string(27 * kSector) + " bytes");
        }
        dialog.Press(IDC_EXIT);
        EXPECT_EQ(m_program.WaitForEnd(), 0U);
    }

    /// Expects a failure: its message box and the end of the process with status 0.
    void ExpectFailure(const CDrivenDialog& dialog, const std::string& text) {
        dialog.Press(IDC_VANTREL);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        EXPECT_EQ(box.Text(), text);
        box.Close();
        EXPECT_EQ(m_program.WaitForEnd(), 0U);
    }

    /// Exports an image of a UMD with the buttons of the window, rebuilds it from the layout, and compares both.
    void ExpectRoundTrip(const std::string& layoutName, const std::string& baseName) {
        SImageDescription description;
        description.kind = EImageKind::Umd;
        description.files = {{"UMD_DATA.BIN", RandomBytes(kSector, 1)}, {"DATA/A.BIN", RandomBytes(5 * kSector, 2)}};
        const Bytes image = BuildImage(description).bytes;
        WriteWhole(m_folder / "source.iso", image);
        MakeFolder(m_folder / "DATA");
        WriteWhole(m_folder / "UMD_DATA.BIN", description.files[0].content);
        WriteWhole(m_folder / "DATA\\A.BIN", description.files[1].content);

        const CDrivenDialog dialog = Choose("source.iso");
        dialog.Press(IDC_ISO_TO_IML);
        WaitForFileDialog(m_program, kConversion).Choose(m_folder / (layoutName + ".iml"));
        WaitForBox(m_program, kConversion).Close();
        ExpectIdle(dialog);
        EXPECT_EQ(FileKindOf(m_folder / (layoutName + ".ims")), EFileKind::File);
        EXPECT_EQ(FileKindOf(m_folder / (baseName + ".ims")), EFileKind::Missing);

        dialog.Choose(m_folder / (layoutName + ".iml"));
        dialog.Press(IDC_VANTREL);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        EXPECT_EQ(box.Text(), std::string("Rebuilding [cd] ISO done added postgap!") + kSoundFault);
        box.Close();
        ExpectIdle(dialog);
        EXPECT_EQ(ReadWhole(m_folder / (baseName + ".iso")), image);
    }

    Bytes WriteImage(EImageKind kind, EPostgap postgap) {
        SImageDescription description;
        description.kind = kind;
        description.postgap = postgap;
        description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/A.BIN", RandomBytes(5000, 2)}};
        Bytes image = BuildImage(description).bytes;
        WriteWhole(m_folder / "game.iso", image);
        return image;
    }

    void CheckNeedsNone(EImageKind kind, EPostgap postgap, const std::string& text) {
        const Bytes before = WriteImage(kind, postgap);
        const CDrivenDialog dialog = Choose("game.iso");
        dialog.Press(IDC_CHECK_POSTGAP);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        EXPECT_EQ(box.Text(), text + (m_folder / "game.iso"));
        EXPECT_EQ(dialog.Pane(EPane::Status), "checking ISO postgap, please Wait");
        box.Close();
        ExpectIdle(dialog);
        EXPECT_EQ(ReadWhole(m_folder / "game.iso"), before);
    }

    /// Sends the command of the greyed button.
    void SendAddPostgap(const CDrivenDialog& dialog) {
        EXPECT_FALSE(dialog.IsEnabled(IDC_ADD_POSTGAP));
        PostMessageW(dialog.Window(), WM_COMMAND, MAKEWPARAM(IDC_ADD_POSTGAP, BN_CLICKED),
                     reinterpret_cast<LPARAM>(dialog.Control(IDC_ADD_POSTGAP)));
    }

    SLayoutDescription m_layout;
    Bytes m_leading;
};

TEST_F(RebuildWindow, Cd) {
    Rebuild(ELayoutMedia::Cd, "Rebuilding [cd] ISO done added postgap!", "Rebuilding [cd] ISO done added postgap!");
}

TEST_F(RebuildWindow, Umd) {
    Rebuild(ELayoutMedia::Umd, "Rebuilding [cd] ISO done added postgap!", "Rebuilding [cd] ISO done added postgap!");
}

TEST_F(RebuildWindow, Dvd) {
    Rebuild(ELayoutMedia::Dvd, "Rebuilding dvd ISO done !", "Rebuilding [dvd] ISO done!");
}

TEST_F(RebuildWindow, ListsRemainWithoutASoundSelection) {
    WriteLayout(ELayoutMedia::Umd);
    const CDrivenDialog dialog = Choose("game.iml");
    dialog.Select(IDC_SOUND, -1);
    dialog.Press(IDC_VANTREL);
    Require(
        "end of the rebuild", [&] { return dialog.Pane(EPane::File) == m_folder / "game.iso"; }, kConversion);
    Require("browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    EXPECT_EQ(FileKindOf(m_folder / "game.vlt"), EFileKind::File);
    EXPECT_EQ(FileKindOf(m_folder / "game.txt"), EFileKind::File);
    EXPECT_EQ(ReadWhole(m_folder / "game.iso"), Expected());
    EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
}

TEST_F(RebuildWindow, MissingFileEndsTheProgram) {
    WriteLayout(ELayoutMedia::Cd);
    RemoveFile(m_folder / "SUB\\B.BIN");
    ExpectFailure(Choose("game.iml"), "Code 3041 - Error!!! Opening [SUB\\B.BIN]");
    EXPECT_EQ(FileKindOf(m_folder / "game.vlt"), EFileKind::File);
    EXPECT_EQ(FileKindOf(m_folder / "game.iso"), EFileKind::File);
}

TEST_F(RebuildWindow, ALayoutWithSeveralDotsIsRebuilt) {
    ExpectRoundTrip("slus_200.62", "slus_200");
}

TEST_F(RebuildWindow, ALayoutWithALongNameIsRebuilt) {
    ExpectRoundTrip("a name of more than thirty characters.with.dots", "a name of more than thirty cha");
}

TEST_F(RebuildWindow, WithoutLeadingStructuresTheOldImageStays) {
    WriteLayout(ELayoutMedia::Cd);
    WriteText(m_folder / "slus_200.62.iml", LayoutText(m_layout));
    WriteText(m_folder / "slus_200.iso", "the image of before");
    RemoveFile(m_folder / "game.ims");
    ExpectFailure(Choose("slus_200.62.iml"), "Code 204!!! file not found==> " + (m_folder / "slus_200.ims"));
    EXPECT_EQ(ReadText(m_folder / "slus_200.iso"), "the image of before");
}

TEST_F(RebuildWindow, NoLayout) {
    WriteText(m_folder / "game.iml", "no layout");
    ExpectFailure(Choose("game.iml"), "Error!!!!!!!! This is not UMD or CD or DVD verson of iml file");
}

TEST_F(RebuildWindow, PostgapOfADvd) {
    CheckNeedsNone(EImageKind::Dvd, EPostgap::None,
                   "This is PS2 DVD iso  image file ,doesn't needed to Write a postgap ");
}

TEST_F(RebuildWindow, PostgapOfAUmd) {
    CheckNeedsNone(EImageKind::Umd, EPostgap::None,
                   "This is PSP UMD iso image file ,doesn't needed to Write a postgap ");
}

TEST_F(RebuildWindow, ExistingPostgap) {
    CheckNeedsNone(EImageKind::Cd, EPostgap::Counted, "This is PS2 CD/DVDRIP iso image file ,already Write a postgap ");
}

TEST_F(RebuildWindow, MissingPostgap) {
    const Bytes before = WriteImage(EImageKind::Cd, EPostgap::Missing);
    const CDrivenDialog dialog = Choose("game.iso");
    dialog.Press(IDC_CHECK_POSTGAP);
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_EQ(box.Text(), std::string("checking [cd] ISO done added postgap!") + kSoundFault);
    EXPECT_EQ(dialog.Pane(EPane::Status), "checking [cd] ISO done added postgap!");
    EXPECT_EQ(dialog.Pane(EPane::File), m_folder / "game.iso");
    box.Close();
    Require("end of the completion", [&] { return dialog.Pane(EPane::Percent) == "0%"; });
    ExpectIdle(dialog);
    EXPECT_EQ(ReadWhole(m_folder / "game.iso"), WithPostgap(before));
}

TEST_F(RebuildWindow, SelectivePostgapOfAUmd) {
    Bytes expected = WriteImage(EImageKind::Umd, EPostgap::None);
    expected.resize(expected.size() + 2 * kSector);
    const CDrivenDialog dialog = Choose("game.iso");
    dialog.Select(IDC_COMPRESSION, 1);
    SendAddPostgap(dialog);
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_EQ(box.Text(), std::string("checking [cd] ISO done added postgap!") + kSoundFault);
    EXPECT_FALSE(dialog.IsEnabled(IDC_COMPRESSION));
    box.Close();
    ExpectIdle(dialog);
    EXPECT_EQ(ReadWhole(m_folder / "game.iso"), WithVolumeSize(expected));
}

TEST_F(RebuildWindow, SelectivePostgapOfACdCorrectsTheVolumeSize) {
    const Bytes before = WriteImage(EImageKind::Cd, EPostgap::Missing);
    const CDrivenDialog dialog = Choose("game.iso");
    SendAddPostgap(dialog);
    WaitForBox(m_program, kConversion).Close();
    ExpectIdle(dialog);
    EXPECT_EQ(ReadWhole(m_folder / "game.iso"), WithVolumeSize(before));
}

TEST_F(RebuildWindow, SelectivePostgapWithoutASelection) {
    const Bytes before = WriteImage(EImageKind::Umd, EPostgap::None);
    const CDrivenDialog dialog = Choose("game.iso");
    dialog.Select(IDC_COMPRESSION, -1);
    SendAddPostgap(dialog);
    Require("start text", [&] { return dialog.Pane(EPane::Status) == "checking ISO postgap, please Wait"; });
    Require("greyed commands", [&] { return !dialog.IsEnabled(IDC_ISO_TO_DAX); });
    EXPECT_TRUE(dialog.IsEnabled(IDC_COMPRESSION));
    EXPECT_FALSE(HasBox(m_program));
    EXPECT_EQ(ReadWhole(m_folder / "game.iso"), before);
}

}  // namespace
}  // namespace vantrel::test
