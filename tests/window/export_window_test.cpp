// "iso2iml" as a user runs it: drops the image, presses the button, answers the save dialog.
#include <algorithm>

#include "files/native_file.h"
#include "tests/support/image_builder.h"
#include "tests/window/driver/window_test.h"

namespace vantrel::test {
namespace {

class ExportWindowTest : public CWindowTest {
protected:
    SBuiltImage MakeImage(EImageKind kind) {
        SImageDescription description;
        description.kind = kind;
        description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/LEVEL.BIN", RandomBytes(5000, 2)}};
        SBuiltImage image = BuildImage(description);
        WriteWhole(m_folder / "game.iso", image.bytes);
        return image;
    }

    void ExpectEnabled(const CDrivenDialog& dialog, const std::vector<int>& enabled) {
        for (const int id :
             {IDC_BROWSE, IDC_ISO_TO_IML, IDC_VANTREL, IDC_ISO_TO_BIN, IDC_BIN_TO_ISO, IDC_CHECK_POSTGAP,
              IDC_ISO_TO_DAX, IDC_DAX_TO_ISO, IDC_ISO_TO_CSO, IDC_CSO_TO_ISO, IDC_FULL_PATH, IDC_RELATIVE_PATH}) {
            const bool expected = std::find(enabled.begin(), enabled.end(), id) != enabled.end();
            EXPECT_EQ(dialog.IsEnabled(id), expected) << id;
        }
    }

    /// The layout without its two dates.
    std::string LayoutWithoutDates(const std::string& path) const {
        std::string text = ReadText(path);
        for (const char* beginning : {"\r\nDATE=", "\r\nCREATIONDATE="}) {
            const std::size_t start = text.find(beginning);
            EXPECT_NE(start, std::string::npos);
            text.erase(start, text.find("\r\n", start + 2) - start);
        }
        return text;
    }

    static std::string Lines(std::initializer_list<const char*> lines) {
        std::string text;
        for (const char* line : lines) {
            text += std::string(line) + "\r\n";
        }
        return text;
    }
};

const std::string kNoName = "\"                                \"";

TEST_F(ExportWindowTest, WritesTheLayoutToTheChosenPath) {
    const SBuiltImage image = MakeImage(EImageKind::Cd);
    CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_IML);
    const CDrivenFileDialog question = WaitForFileDialog(m_program, kConversion);
    EXPECT_EQ(FileKindOf(m_folder / "temp1.tmp"), EFileKind::File) << "the walk ends before the dialog appears";
    ExpectEnabled(dialog, {IDC_FULL_PATH, IDC_RELATIVE_PATH});
    EXPECT_EQ(dialog.Pane(EPane::File), m_folder / "game.iso");
    question.Choose(m_folder / "layout.iml");
    const CDrivenBox box = WaitForBox(m_program, kConversion);
    EXPECT_EQ(box.Text().substr(0, 16), "Export iml done!");
    EXPECT_EQ(dialog.Pane(EPane::Percent), "100%");
    EXPECT_EQ(dialog.Pane(EPane::Status), "Export iml done!");
    EXPECT_EQ(dialog.Pane(EPane::File), m_folder / "layout.iml");
    box.Close();
    Require("end of the conversion", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    ExpectEnabled(dialog, {IDC_BROWSE, IDC_FULL_PATH, IDC_RELATIVE_PATH});
    EXPECT_TRUE(dialog.AcceptsDrops());
    EXPECT_EQ(dialog.Pane(EPane::Percent), "0%");
    EXPECT_EQ(dialog.Text(IDC_OUTPUT_FOLDER), m_folder.Path());
    EXPECT_EQ(dialog.Text(IDC_OUTPUT_NAME), "layout.iml");
    EXPECT_EQ(
        LayoutWithoutDates(m_folder / "layout.iml"),
        Lines({"[SYS]", "VERSION=1.00", "MEDIA=CD", "TARGET=PS2", "DISCVERSION=1.00", "[/SYS]", "", "[CUE]"}) +
            "DISCNAME=" + kNoName + "\r\nPRODUCER=" + kNoName + "\r\nCOPYRIGHT=" + kNoName + "\r\n" +
            Lines({"PSTYPE=2", "DISCCODE=01", "#Track   Index   Time        Form        Control        LBN",
                   " 00      00      00:00:00    CDROM2_0    DATA", " 01      00      00:00:00    CDROM2_0    DATA",
                   " 01      00      00:00:00    CDROM2_0    DATA           0",
                   " AA      01      00:00:00    CDROM2_0    DATA           0", "[/CUE]", "", "[LOC]",
                   "# the number of entries: 3", "#Start   End      Mode Fno Path",
                   "0        23       2.1  0   \"layout.ims\"", "24       24       2.1  0   \"SYSTEM.CNF\"",
                   "25       27       2.1  0   \"DATA\\LEVEL.BIN\"", "[/LOC]", ""}));
    EXPECT_TRUE(ReadWhole(m_folder / "layout.ims") == Bytes(image.bytes.begin(), image.bytes.begin() + 24 * 2048));
    EXPECT_EQ(ReadText(m_folder / "game.iso-LBA.TXT"),
              Lines({"00000018|0000003D|00000001|\\SYSTEM.CNF", "00000019|00001388|00000003|\\DATA\\LEVEL.BIN"}));
    EXPECT_EQ(ReadWhole(m_folder / "game.iso.vlt").size(), 20U);
    EXPECT_EQ(FileKindOf(m_folder / "temp1.tmp"), EFileKind::Missing);
    EXPECT_EQ(FileKindOf(m_folder / "tmp.tmp"), EFileKind::Missing);
    dialog.Press(IDC_EXIT);
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

TEST_F(ExportWindowTest, TheDialogIsUsableAfterACancelledChoice) {
    MakeImage(EImageKind::Dvd);
    CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_IML);
    WaitForFileDialog(m_program, kConversion).Cancel();
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_EQ(box.Text(), "You cancelled.");
    EXPECT_EQ(box.Caption(), "No File Chosen");
    ExpectEnabled(dialog, {IDC_FULL_PATH, IDC_RELATIVE_PATH});
    box.Close();
    Require("browse button", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    ExpectEnabled(dialog, {IDC_BROWSE, IDC_FULL_PATH, IDC_RELATIVE_PATH});
    Require("dropping", [&] { return dialog.AcceptsDrops(); });
    EXPECT_EQ(dialog.Text(IDC_OUTPUT_NAME), "");

    // A second attempt exports the image. A name without extension gets that of layouts.
    dialog.Drop({m_folder / "game.iso"});
    Require("iso2iml button", [&] { return dialog.IsEnabled(IDC_ISO_TO_IML); });
    dialog.Press(IDC_ISO_TO_IML);
    WaitForFileDialog(m_program, kConversion).Choose(m_folder / "second");
    WaitForBox(m_program, kConversion).Close();
    Require("end of the conversion", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    const std::string layout = ReadText(m_folder / "second.iml");
    EXPECT_EQ(layout.at(27), 'D');
    EXPECT_EQ(ReadWhole(m_folder / "second.ims").size() % 2048, 0U);
}

TEST_F(ExportWindowTest, AChosenFolderPrecedesEveryPath) {
    MakeImage(EImageKind::Umd);
    const std::string folder = m_folder / "loose files";
    ASSERT_TRUE(MakeFolder(folder));
    CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_FULL_PATH);
    WaitForFileDialog(m_program).Choose(folder);
    Require("the folder", [&] { return dialog.Text(IDC_IML_PATH) == folder + "\\"; });
    dialog.Press(IDC_ISO_TO_IML);
    WaitForFileDialog(m_program, kConversion).Choose(m_folder / "game.iml");
    WaitForBox(m_program, kConversion).Close();
    Require("end of the conversion", [&] { return dialog.IsEnabled(IDC_BROWSE); });
    const std::string layout = ReadText(m_folder / "game.iml");
    const std::string written = folder.substr(folder.find(':') + 1);  // without its drive
    EXPECT_NE(layout.find('"' + written + "\\SYSTEM.CNF\"\r\n"), std::string::npos) << layout;
    EXPECT_NE(layout.find('"' + written + "\\DATA\\LEVEL.BIN\"\r\n"), std::string::npos) << layout;
}

/// "2026/11/21-01:07:59" and "20261121": a local time in the forms of a layout.
std::pair<std::string, std::string> LayoutTimes(const SYSTEMTIME& time) {
    const auto twoDigits = [](int number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    const std::string year = std::to_string(time.wYear);
    const std::string month = twoDigits(time.wMonth);
    const std::string day = twoDigits(time.wDay);
    const int hour = time.wHour % 12;
    return {year + "/" + month + "/" + day + "-" + twoDigits(hour == 0 ? 12 : hour) + ":" + twoDigits(time.wMinute) +
                ":" + twoDigits(time.wSecond),
            year + month + day};
}

/// The text of a line "KEY=text".
std::string LineOf(const std::string& layout, const std::string& key) {
    const std::size_t start = layout.find("\r\n" + key + "=") + key.size() + 3;
    return layout.substr(start, layout.find("\r\n", start) - start);
}

TEST_F(ExportWindowTest, TheLayoutHasTheLocalTimeOfTheSystem) {
    constexpr ULONGLONG kSecond = 10'000'000;
    MakeImage(EImageKind::Cd);
    CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_IML);
    const CDrivenFileDialog question = WaitForFileDialog(m_program, kConversion);
    SYSTEMTIME before{};
    GetLocalTime(&before);
    question.Choose(m_folder / "layout.iml");
    WaitForBox(m_program, kConversion).Close();
    FILETIME ticks{};
    SystemTimeToFileTime(&before, &ticks);
    ULARGE_INTEGER moment = {};
    moment.LowPart = ticks.dwLowDateTime;
    moment.HighPart = ticks.dwHighDateTime;
    std::vector<std::pair<std::string, std::string>> possible;
    for (int second = 0; second < 60; ++second, moment.QuadPart += kSecond) {
        ticks = {moment.LowPart, moment.HighPart};
        SYSTEMTIME time{};
        FileTimeToSystemTime(&ticks, &time);
        possible.push_back(LayoutTimes(time));
    }
    const std::string layout = ReadText(m_folder / "layout.iml");
    const std::pair written = {LineOf(layout, "DATE"), LineOf(layout, "CREATIONDATE")};
    EXPECT_NE(std::find(possible.begin(), possible.end(), written), possible.end())
        << written.first << " is not within a minute after " << possible.front().first;
}

/// Such as names in Japanese whose last byte is that of a backslash.
TEST_F(ExportWindowTest, ANameThatEndsInABackslashIsListed) {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"NAME\\", RandomBytes(100, 2)}};
    WriteWhole(m_folder / "game.iso", BuildImage(description).bytes);
    CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_IML);
    WaitForFileDialog(m_program, kConversion).Choose(m_folder / "layout.iml");
    WaitForBox(m_program, kConversion).Close();
    const std::string layout = ReadText(m_folder / "layout.iml");
    EXPECT_NE(layout.find("# the number of entries: 3\r\n"), std::string::npos) << layout;
    EXPECT_NE(layout.find("\"NAME\\\"\r\n"), std::string::npos) << layout;
}

TEST_F(ExportWindowTest, ARefusedImageEndsTheProgram) {
    WriteText(m_folder / "game.iso", "no image at all");
    CDrivenDialog dialog = m_program.Start();
    dialog.Choose(m_folder / "game.iso");
    dialog.Press(IDC_ISO_TO_IML);
    const CDrivenBox box = WaitForBox(m_program);
    EXPECT_EQ(box.Text(), "Code 9999 - invalid file header " + (m_folder / "game.iso"));
    box.Close();
    EXPECT_EQ(m_program.WaitForEnd(), 0U);
}

}  // namespace
}  // namespace vantrel::test
