// iso2bin and bin2iso through the real buttons: panes, texts, temporary files, unusual names.
#include <gmock/gmock.h>

#include "files/native_file.h"
#include "files/path.h"
#include "tests/support/image_builder.h"
#include "tests/support/raw_sector_check.h"
#include "tests/window/conversions/console_program.h"
#include "tests/window/conversions/folder_watch.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDoneText = "Conversion iso2bin Done !";

Bytes CdImage(std::size_t extra = 0, EPostgap postgap = EPostgap::None) {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/LEVEL1.BIN", RandomBytes(50'000 + extra, 2)}};
    description.postgap = postgap;
    return BuildImage(description).bytes;
}

class CRawTest : public CWindowTest {
protected:
    void SetUp() override { ASSERT_TRUE(MakeFolder(m_discs)); }

    std::string Disc(const std::string& name) const { return WithSeparator(m_discs) + name; }

    /// The raw image as the console program makes it. Its files are removed.
    Bytes RawImageOfConsole(const std::string& image) {
        const std::string bin = m_folder / "console.bin";
        EXPECT_EQ(RunConsoleProgram({"iso2bin", "-q", "-o", bin, image}), 0);
        const Bytes raw = ReadWhole(bin);
        RemoveFile(bin);
        RemoveFile(m_folder / "console.cue");
        return raw;
    }

    /// Presses a button, closes the done message and returns its text.
    std::string Convert(const CDrivenDialog& dialog, int button) {
        dialog.Press(button);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        std::string text = box.Text();
        box.Close();
        Require("the browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
        return text;
    }

    std::string m_discs = m_folder / "discs";
};

TEST_F(CRawTest, ConvertsAndReports) {
    const Bytes image = CdImage();
    WriteWhole(Disc("Game.iso"), image);
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(Disc("Game.iso"));
    EXPECT_THAT(Convert(dialog, IDC_ISO_TO_BIN), StartsWith(kDoneText));
    EXPECT_EQ(dialog.Pane(EPane::Status), kDoneText);
    EXPECT_EQ(dialog.Pane(EPane::File), "game.bin");
    EXPECT_EQ(dialog.Pane(EPane::Bytes), std::to_string(image.size() / 2048 * 2352) + " bytes");
    EXPECT_EQ(dialog.Pane(EPane::Percent), "0%");
    for (const int id : {IDC_ISO_TO_IML, IDC_VANTREL, IDC_ISO_TO_BIN, IDC_BIN_TO_ISO, IDC_CHECK_POSTGAP, IDC_ISO_TO_DAX,
                         IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO}) {
        EXPECT_FALSE(dialog.IsEnabled(id)) << id;
    }
    EXPECT_TRUE(dialog.AcceptsDrops());

    EXPECT_THAT(ListFolder(m_discs), ElementsAre("Game.iso", "game.bin", "game.cue"));
    EXPECT_EQ(ReadText(Disc("game.cue")),
              "FILE \"game.bin\" BINARY\r\n  TRACK 01 MODE2/2352\r\n    INDEX 01 00:00:00\r\n");
    const Bytes raw = ReadWhole(Disc("game.bin"));
    EXPECT_EQ(FaultOfRawImage(raw), "");
    EXPECT_EQ(raw, RawImageOfConsole(Disc("Game.iso")));

    dialog.Choose(Disc("game.bin"));
    EXPECT_THAT(Convert(dialog, IDC_BIN_TO_ISO), StartsWith("Conversion bin2iso Done !"));
    EXPECT_EQ(dialog.Pane(EPane::Status), "Converted bin2iso done !");
    EXPECT_EQ(dialog.Pane(EPane::File), Disc("new-game.iso"));
    EXPECT_EQ(dialog.Pane(EPane::Bytes), std::to_string(image.size()) + " bytes");
    EXPECT_EQ(ReadWhole(Disc("new-game.iso")), image);
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(CRawTest, ConvertsTheWholeSectorsOfAnImage) {
    const Bytes image = CdImage();
    WriteWhole(Disc("whole.iso"), image);
    Bytes longer = image;
    longer.resize(image.size() + 1000, 7);
    WriteWhole(Disc("game.iso"), longer);
    WriteText(Disc("game.bin"), "older");
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(Disc("game.iso"));
    EXPECT_THAT(Convert(dialog, IDC_ISO_TO_BIN), StartsWith(kDoneText));
    EXPECT_EQ(dialog.Pane(EPane::Bytes), std::to_string(image.size() / 2048 * 2352) + " bytes");
    EXPECT_EQ(ReadWhole(Disc("game.bin")), RawImageOfConsole(Disc("whole.iso")));
}

TEST_F(CRawTest, TemporaryFilesAppearAndDisappear) {
    WriteWhole(Disc("game.iso"), CdImage(20'000'000, EPostgap::Missing));
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(Disc("game.iso"));
    CFolderWatch discs(m_discs);
    CFolderWatch programs(m_folder.Path());
    Convert(dialog, IDC_ISO_TO_BIN);
    discs.Stop();
    programs.Stop();
    EXPECT_THAT(discs.Appeared(), ElementsAre("ISO2BIN.BAT", "game.bin", "game.cue", "tmpfile.exe"));
    EXPECT_THAT(discs.Vanished(), ElementsAre("ISO2BIN.BAT", "tmpfile.exe"));
    EXPECT_THAT(programs.Appeared(), ElementsAre("~tmp.zzz"));
    EXPECT_THAT(programs.Vanished(), ElementsAre("~tmp.zzz"));
    const Bytes raw = ReadWhole(Disc("game.bin"));
    EXPECT_EQ(raw, RawImageOfConsole(Disc("game.iso")));
    EXPECT_EQ(raw.size() / 2352, ReadWhole(Disc("game.iso")).size() / 2048 + 150);
}

/// An environment variable during the object's life, for the programs that the test starts.
class CVariable {
public:
    CVariable(const wchar_t* name, const wchar_t* value) : m_name(name) {
        wchar_t former[MAX_PATH] = L"";
        m_existed = GetEnvironmentVariableW(name, former, MAX_PATH) > 0;
        m_former = former;
        SetEnvironmentVariableW(name, value);
    }
    ~CVariable() { SetEnvironmentVariableW(m_name.c_str(), m_existed ? m_former.c_str() : nullptr); }
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

private:
    std::wstring m_name;
    std::wstring m_former;
    bool m_existed;
};

/// Wine's command processor always searches it, so there is none here.
TEST_F(CRawTest, ConvertsIfTheCommandProcessorDoesNotSearchItsCurrentFolder) {
    const CVariable noSearch(L"NoDefaultCurrentDirectoryInExePath", L"1");
    const CVariable noProcessor(L"COMSPEC", L"Z:\\nowhere\\cmd.exe");
    WriteWhole(Disc("game.iso"), CdImage());
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(Disc("game.iso"));
    EXPECT_THAT(Convert(dialog, IDC_ISO_TO_BIN), StartsWith(kDoneText));
    EXPECT_EQ(ReadWhole(Disc("game.bin")), RawImageOfConsole(Disc("game.iso")));
}

TEST_F(CRawTest, ConvertsUnusualNamesAndRunsNothing) {
    const CDrivenDialog dialog = m_program.Start();
    const Bytes image = CdImage();
    for (const std::string name :
         {"my game", "a&md evil", "a & md evil &", "%windir%", "100% ^done^", "a^b", "(x) [y] {z}", "it's !odd!; a,b=c",
          "caf\xC3\xA9 \xD0\xB8\xD0\xB3\xD1\x80\xD0\xB0 \xE3\x82\xB2", "-dash", "a~1@b`c`", "x.y.z"}) {
        SCOPED_TRACE(name);
        WriteWhole(Disc(name + ".iso"), image);
        dialog.Choose(Disc(name + ".iso"));
        CFolderWatch watch(m_discs);
        EXPECT_THAT(Convert(dialog, IDC_ISO_TO_BIN), StartsWith(kDoneText));
        watch.Stop();
        EXPECT_THAT(watch.Appeared(), Contains("ISO2BIN.BAT")) << "the same temporary files as always";
        EXPECT_THAT(watch.Appeared(), Contains("tmpfile.exe"));
        EXPECT_THAT(ListFolder(m_discs), testing::UnorderedElementsAre(name + ".iso", name + ".bin", name + ".cue"));
        const Bytes raw = ReadWhole(Disc(name + ".bin"));
        EXPECT_EQ(raw.size(), image.size() / 2048 * 2352);
        EXPECT_EQ(FaultOfRawImage(raw), "");
        EXPECT_THAT(ReadText(Disc(name + ".cue")), StartsWith("FILE \"" + name + ".bin\" BINARY\r\n"));
        for (const char* extension : {".iso", ".bin", ".cue"}) {
            RemoveFile(Disc(name + extension));
        }
    }
}

TEST_F(CRawTest, ConvertsInUnusualFolders) {
    const Bytes image = CdImage();
    const CDrivenDialog dialog = m_program.Start(m_discs);  // the working folder is not the program's
    for (const std::string name : {"with blanks", "a&b", "100%", "caf\xC3\xA9"}) {
        SCOPED_TRACE(name);
        const std::string folder = m_folder / name;
        ASSERT_TRUE(MakeFolder(folder));
        WriteWhole(WithSeparator(folder) + "game.iso", image);
        dialog.Choose(WithSeparator(folder) + "game.iso");
        EXPECT_THAT(Convert(dialog, IDC_ISO_TO_BIN), StartsWith(kDoneText));
        EXPECT_THAT(ListFolder(folder), ElementsAre("game.bin", "game.cue", "game.iso"));
        EXPECT_EQ(ReadWhole(WithSeparator(folder) + "game.bin").size(), image.size() / 2048 * 2352);
    }
}

TEST_F(CRawTest, ConvertsIfTheProgramFolderCannotBeWritten) {
    ASSERT_TRUE(MakeFolder(m_folder / "~tmp.zzz"));
    WriteWhole(Disc("game.iso"), CdImage());
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(Disc("game.iso"));
    EXPECT_THAT(Convert(dialog, IDC_ISO_TO_BIN), StartsWith(kDoneText));
    EXPECT_THAT(ListFolder(m_discs), ElementsAre("game.bin", "game.cue", "game.iso"));
}

TEST_F(CRawTest, IgnoresAnotherProgramNamedTmpfile) {
    WriteText(Disc("tmpfile.com"), "not a program");
    WriteWhole(Disc("game.iso"), CdImage());
    const CDrivenDialog dialog = m_program.Start();
    dialog.Choose(Disc("game.iso"));
    EXPECT_THAT(Convert(dialog, IDC_ISO_TO_BIN), StartsWith(kDoneText));
    EXPECT_THAT(ListFolder(m_discs), ElementsAre("game.bin", "game.cue", "game.iso", "tmpfile.com"));
}

/// Failures that end the program.
class CRawFailure : public CRawTest {
protected:
    std::string FailureText(const std::string& name, int button) {
        const CDrivenDialog dialog = m_program.Start();
        dialog.Choose(Disc(name));
        dialog.Press(button);
        const CDrivenBox box = WaitForBox(m_program, kConversion);
        std::string text = box.Text();
        box.Close();
        EXPECT_EQ(m_program.WaitForEnd(), 0U);
        return text;
    }
};

TEST_F(CRawFailure, ADvdIsRefused) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    description.files = {{"SYSTEM.CNF", Bytes(10, 1)}};
    WriteWhole(Disc("dvd.iso"), BuildImage(description).bytes);
    EXPECT_EQ(FailureText("dvd.iso", IDC_ISO_TO_BIN),
              "Code 76 PS2 - invalid PS2 CD iso  file header  " + Disc("dvd.iso"));
    EXPECT_THAT(ListFolder(m_discs), ElementsAre("dvd.iso"));
}

TEST_F(CRawFailure, TheSheetCannotBeCreated) {
    WriteWhole(Disc("game.iso"), CdImage());
    ASSERT_TRUE(MakeFolder(Disc("game.cue")));
    EXPECT_EQ(FailureText("game.iso", IDC_ISO_TO_BIN), "Code 102- Error Opening " + Disc("game.cue"));
    EXPECT_THAT(ListFolder(m_discs), ElementsAre("ISO2BIN.BAT", "game.cue", "game.iso", "tmpfile.exe"));
}

TEST_F(CRawFailure, TheBatchFileCannotBeCreated) {
    WriteWhole(Disc("game.iso"), CdImage());
    ASSERT_TRUE(MakeFolder(Disc("ISO2BIN.BAT")));
    EXPECT_EQ(FailureText("game.iso", IDC_ISO_TO_BIN), "Code 101- Error Opening " + Disc("ISO2BIN.BAT"));
    EXPECT_THAT(ListFolder(m_discs), ElementsAre("ISO2BIN.BAT", "game.iso", "tmpfile.exe"));
}

TEST_F(CRawFailure, AMode1ImageIsRefused) {
    Bytes raw(2352, 0xFF);
    raw[0] = raw[11] = 0;
    raw[15] = 1;
    WriteWhole(Disc("game.bin"), raw);
    EXPECT_EQ(FailureText("game.bin", IDC_BIN_TO_ISO), "Error bin image => MODE 2 only !");
    EXPECT_THAT(ListFolder(m_discs), ElementsAre("game.bin", "new-game.iso"));
    EXPECT_EQ(ReadWhole(Disc("new-game.iso")), Bytes{});
}

}  // namespace
}  // namespace vantrel::test
