// The conversion to a raw image with a fake converter program: order of all calls, the files that appear and disappear,
// names that must never reach the command processor.
#include "app/converter/converter_conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/converter/batch_line.h"
#include "files/native_file.h"
#include "tests/support/raw_sector_check.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/raw/raw_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;
using testing::ElementsAre;
using testing::IsEmpty;

/// Records its calls with the files that exist at that time.
class CFakeRunner : public CConverterRunner {
public:
    explicit CFakeRunner(const CTestFolder& folder) : m_folder(folder) {}

    void PlaceConverter(const std::string& folder) override {
        Note("place", folder);
        test::WriteText(m_folder / "tmpfile.exe", "converter");
    }
    void StartBatchFile(const std::string& folder, const std::string& name) override {
        Note("batch " + name, folder);
        m_line = test::ReadText(m_folder / name);
    }
    void StartConverter(const std::string& folder, const std::vector<std::string>& arguments) override {
        std::string words;
        for (const std::string& argument : arguments) {
            words += "<" + argument + ">";
        }
        Note("direct " + words, folder);
    }
    bool HasFinished() override { return ++m_polls >= m_pollsUntilFinished; }
    void RemoveConverter(const std::string& folder) override {
        Note("remove", folder);
        RemoveFile(m_folder / "tmpfile.exe");
    }

    std::vector<std::string> m_notes;
    std::string m_line;
    int m_pollsUntilFinished = 1;

private:
    void Note(const std::string& what, const std::string& folder) {
        EXPECT_EQ(folder, m_folder.Path());
        m_notes.push_back(what + " among " + testing::PrintToString(m_folder.Names()));
    }

    const CTestFolder& m_folder;
    int m_polls = 0;
};

/// An environment variable during the object's life.
class CVariable {
public:
    CVariable(const char* name, const char* value) : m_name(name) { setenv(name, value, 1); }
    ~CVariable() { unsetenv(m_name); }
    CVariable(const CVariable&) = delete;
    CVariable& operator=(const CVariable&) = delete;

private:
    const char* m_name;
};

Bytes WithVolumeSize(Bytes image, std::uint32_t sectors) {
    test::Write32(image, 32848, sectors);
    return image;
}

std::string SizeText(std::size_t size) {
    return std::to_string(size) + " bytes";
}

TEST(ConverterConversion, CallsComeInOrder) {
    const CTestFolder folder;
    const Bytes image = test::CdImage();
    const std::string sectors = std::to_string(image.size() / 2048);
    test::WriteWhole(folder / "game.iso", image);
    CRecordingOperation operation;
    CFakeRunner runner(folder);
    runner.m_pollsUntilFinished = 2;
    IsoToBinByConverter(folder.Path(), "game.iso", runner, operation);
    const std::string bytes = "pane BYTES " + SizeText(image.size());
    const std::string second = "pane PERCENT " + std::to_string(100 / (image.size() / 2048)) + "%";
    EXPECT_THAT(
        operation.Calls(),
        ElementsAre("pane STATUS Converting ISO2BIN, please Wait", bytes, "begin iso2bin", "total " + sectors,  //
                    "pane PERCENT 0%", "done 1", bytes, "yield",                                                //
                    second, "done 2", bytes, "yield",                                                           //
                    "done " + sectors, "pane PERCENT 100%", "pane STATUS Conversion iso2bin Done !",
                    "complete Conversion iso2bin Done !", "completed", "pane STATUS Conversion iso2bin Done !",
                    "pane FILE game.bin", "pane BYTES " + SizeText(image.size() / 2048 * 2352)));
    EXPECT_THAT(runner.m_notes,
                ElementsAre(R"(place among { "game.iso" })",
                            R"(batch ISO2BIN.BAT among { "ISO2BIN.BAT", "game.cue", "game.iso", "tmpfile.exe" })",
                            R"(remove among { "game.cue", "game.iso", "tmpfile.exe" })"));
    EXPECT_THAT(folder.Names(), ElementsAre("game.cue", "game.iso"));
    EXPECT_EQ(runner.m_line, "tmpfile game.iso game.bin /mode2\r\n");
    EXPECT_EQ(test::ReadText(folder / "game.cue"),
              "FILE \"game.bin\" BINARY\r\n  TRACK 01 MODE2/2352\r\n    INDEX 01 00:00:00\r\n");
}

TEST(ConverterConversion, TheBarStartsAgainAtItsEnd) {
    const CTestFolder folder;
    const Bytes image = test::CdImage();
    const auto sectors = static_cast<int>(image.size() / 2048);
    test::WriteWhole(folder / "game.iso", image);
    CRecordingOperation operation;
    CFakeRunner runner(folder);
    runner.m_pollsUntilFinished = 2 * sectors + 1;
    IsoToBinByConverter(folder.Path(), "game.iso", runner, operation);
    std::vector<std::string> steps;
    for (int round = 0; round < 2; ++round) {
        for (int step = 1; step <= sectors; ++step) {
            steps.push_back("done " + std::to_string(step));
        }
        steps.emplace_back("done 0");
    }
    steps.emplace_back("done 1");
    steps.push_back("done " + std::to_string(sectors));
    EXPECT_EQ(operation.CallsOf("done"), steps);
    EXPECT_EQ(operation.CallsOf("pane PERCENT 0%").size(), 5U)
        << "at the start of each round and at the end of the first two";
    EXPECT_EQ(operation.CallsOf("yield").size(), static_cast<std::size_t>(2 * sectors + 1));
}

TEST(ConverterConversion, ShowsNothingMoreIfTheCompletionIsLeftEarly) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.iso", test::CdImage());
    CRecordingOperation operation;
    operation.m_completes = false;
    CFakeRunner runner(folder);
    IsoToBinByConverter(folder.Path(), "game.iso", runner, operation);
    EXPECT_EQ(operation.Calls().back(), "complete Conversion iso2bin Done !");
}

TEST(ConverterConversion, AddsAPostgapUnlessTheImageIsAsLongAsItsVolume) {
    const Bytes image = test::CdImage();
    const auto sectors = static_cast<std::uint32_t>(image.size() / 2048);
    for (const std::uint32_t volume : {sectors - 1, sectors, sectors + 1}) {
        const CTestFolder folder;
        test::WriteWhole(folder / "game.iso", WithVolumeSize(image, volume));
        CRecordingOperation operation;
        CFakeRunner runner(folder);
        IsoToBinByConverter(folder.Path(), "game.iso", runner, operation);
        EXPECT_EQ(runner.m_line, volume == sectors ? "tmpfile game.iso game.bin /mode2\r\n"
                                                   : "tmpfile game.iso game.bin /mode2 /postgap\r\n");
    }
}

TEST(ConverterConversion, ReplacesOlderFilesWhole) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.iso", test::CdImage());
    test::WriteText(folder / "game.cue", std::string(1000, 'o'));
    test::WriteText(folder / "ISO2BIN.BAT", std::string(1000, 'o'));
    CRecordingOperation operation;
    CFakeRunner runner(folder);
    IsoToBinByConverter(folder.Path(), "game.iso", runner, operation);
    EXPECT_EQ(runner.m_line, "tmpfile game.iso game.bin /mode2\r\n");
    EXPECT_EQ(test::ReadText(folder / "game.cue"),
              "FILE \"game.bin\" BINARY\r\n  TRACK 01 MODE2/2352\r\n    INDEX 01 00:00:00\r\n");
}

TEST(ConverterConversion, KeepsTheCaseOfTheNameOnly) {
    const CTestFolder folder;
    test::WriteWhole(folder / "Game.ISO", test::CdImage());
    CRecordingOperation operation;
    CFakeRunner runner(folder);
    IsoToBinByConverter(folder.Path(), "Game.ISO", runner, operation);
    EXPECT_EQ(runner.m_line, "tmpfile Game.iso Game.bin /mode2\r\n");
    EXPECT_EQ(operation.PaneText(EPane::File), "Game.bin");
    EXPECT_THAT(folder.Names(), ElementsAre("Game.ISO", "Game.cue"));
}

TEST(ConverterConversion, NamesOutputsAfterTheFileWithoutItsExtension) {
    const CTestFolder folder;
    test::WriteWhole(folder / "a.b.img", test::CdImage());
    CRecordingOperation operation;
    CFakeRunner runner(folder);
    IsoToBinByConverter(folder.Path(), "a.b.img", runner, operation);
    EXPECT_EQ(runner.m_line, "tmpfile a.b.iso a.b.bin /mode2\r\n")
        << "the input of the converter is always name + .iso";
    EXPECT_THAT(folder.Names(), ElementsAre("a.b.cue", "a.b.img"));
}

TEST(ConverterConversion, BypassesTheCommandProcessorForNamesThatItInterprets) {
    for (const std::string name : {"a b", "a&calc", "%PATH%", "a^b", "(a)", "a;b", "a,b", "a=b", "caf\xC3\xA9", "a'b",
                                   "!x!", "a@b", "`a`", "a~1"}) {
        const CTestFolder folder;
        test::WriteWhole(folder / (name + ".iso"), test::CdImage());
        CRecordingOperation operation;
        CFakeRunner runner(folder);
        IsoToBinByConverter(folder.Path(), name + ".iso", runner, operation);
        ASSERT_EQ(runner.m_notes.size(), 3U);
        EXPECT_THAT(runner.m_notes[1],
                    testing::StartsWith("direct <" + name + ".iso><" + name + ".bin></mode2> among"));
        EXPECT_THAT(runner.m_notes[1], testing::HasSubstr("ISO2BIN.BAT")) << "the same files appear";
    }
}

TEST(BatchLine, HasTheArgumentsOfADirectCall) {
    EXPECT_EQ(BatchLineOf({"a.iso", "a.bin", false}), "tmpfile a.iso a.bin /mode2\n");
    EXPECT_EQ(BatchLineOf({"a.iso", "a.bin", true}), "tmpfile a.iso a.bin /mode2 /postgap\n");
    EXPECT_THAT(ArgumentsOf({"a.iso", "a.bin", true}), testing::ElementsAre("a.iso", "a.bin", "/mode2", "/postgap"));
}

TEST(BatchLine, IsUnsafeInFoldersThatTheCommandProcessorCannotUse) {
    const SConverterCall call = {"game.iso", "game.bin", false};
    EXPECT_TRUE(IsBatchLineSafe("C:\\My Games\\", call));
    EXPECT_TRUE(IsBatchLineSafe("/discs/cd/", call));
    EXPECT_FALSE(IsBatchLineSafe("C:\\100%\\", call));
    EXPECT_FALSE(IsBatchLineSafe("C:\\a&b\\", call));
    EXPECT_FALSE(IsBatchLineSafe("C:\\caf\xC3\xA9\\", call));
    EXPECT_FALSE(IsBatchLineSafe("\\\\server\\share\\", call));
    EXPECT_FALSE(IsBatchLineSafe("//server/share/", call));
    EXPECT_FALSE(IsBatchLineSafe("C:\\", {"a b.iso", "game.bin", false}));
    EXPECT_FALSE(IsBatchLineSafe("C:\\", {"game.iso", "a b.bin", false}));
    const CTestFolder folder;
    EXPECT_TRUE(IsBatchLineSafe(folder.Path(), call));
    {
        const CVariable variable("NoDefaultCurrentDirectoryInExePath", "1");
        EXPECT_FALSE(IsBatchLineSafe(folder.Path(), call)) << "the converter would not be found";
    }
    test::WriteText(folder / "tmpfile.com", "something else");
    EXPECT_FALSE(IsBatchLineSafe(folder.Path(), call)) << "this program would run instead of the converter";
}

TEST(ConverterConversion, FailuresHaveTheirTextsAndKeepTheFiles) {
    const CTestFolder folder;
    CRecordingOperation operation;
    CFakeRunner runner(folder);
    const auto failure = [&](const char* name) {
        return FailureOf([&] { IsoToBinByConverter(folder.Path(), name, runner, operation); });
    };
    EXPECT_EQ(failure("a.iso"), "Code 103- Error Opening " + (folder / "a.iso"));
    const std::string refused = "Code 76 PS2 - invalid PS2 CD iso  file header  " + (folder / "a.iso");
    test::WriteWhole(folder / "a.iso", {});
    EXPECT_EQ(failure("a.iso"), refused);
    for (const std::size_t damaged : {33792, 33794, 33342, 33344}) {
        Bytes image = test::CdImage();
        image[damaged] ^= 1;
        test::WriteWhole(folder / "a.iso", image);
        EXPECT_EQ(failure("a.iso"), refused) << damaged;
    }
    EXPECT_THAT(runner.m_notes, IsEmpty());
    EXPECT_THAT(folder.Names(), ElementsAre("a.iso"));

    test::WriteWhole(folder / "a.iso", test::CdImage());
    ASSERT_TRUE(MakeFolder(folder / "a.cue"));
    EXPECT_EQ(failure("a.iso"), "Code 102- Error Opening " + (folder / "a.cue"));
    EXPECT_THAT(folder.Names(), ElementsAre("ISO2BIN.BAT", "a.cue", "a.iso", "tmpfile.exe"));
    RemoveFile(folder / "ISO2BIN.BAT");
    ASSERT_TRUE(MakeFolder(folder / "ISO2BIN.BAT"));
    EXPECT_EQ(failure("a.iso"), "Code 101- Error Opening " + (folder / "ISO2BIN.BAT"));
}

TEST(ConverterConversion, RefusesADvd) {
    const CTestFolder folder;
    test::SImageDescription description;
    description.kind = test::EImageKind::Dvd;
    description.files = {{"SYSTEM.CNF", Bytes(10, 1)}};
    test::WriteWhole(folder / "dvd.iso", test::BuildImage(description).bytes);
    CRecordingOperation operation;
    CFakeRunner runner(folder);
    EXPECT_EQ(FailureOf([&] { IsoToBinByConverter(folder.Path(), "dvd.iso", runner, operation); }),
              "Code 76 PS2 - invalid PS2 CD iso  file header  " + (folder / "dvd.iso"));
}

}  // namespace
}  // namespace vantrel
