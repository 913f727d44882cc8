// The CD rebuild with strict checks: what the window accepts is refused, and inputs are never replaced.
#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class StrictRebuild : public RebuildTest {};

TEST_F(StrictRebuild, WritesTheSameImageAndNothingElse) {
    for (const std::size_t size : {0U, 1U, 2048U, 5000U, 300'000U}) {
        m_layout.entries.clear();
        Add(25, 25 + static_cast<std::int64_t>(size / kSector), "A.BIN", test::RandomBytes(size, size));
        test::WriteText(m_folder / "game.txt", "notes of the user");
        m_layout.entries[0].path = "A.BIN";
        WriteLayout();
        RebuildImage(Strict(), m_operation);
        EXPECT_EQ(m_folder.Names(),
                  (std::vector<std::string>{"A.BIN", "game.iml", "game.ims", "game.iso", "game.txt"}));
        EXPECT_EQ(test::ReadText(m_folder / "game.txt"), "notes of the user");
        const Bytes strict = test::ReadWhole(m_folder / "game.iso");
        m_layout.entries[0].path = m_prefix + "A.BIN";
        EXPECT_EQ(Rebuilt(), strict);
        RemoveFile(m_folder / "game.iso");
    }
}

TEST_F(StrictRebuild, LeavesNothingAfterAFailure) {
    m_prefix = "";
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_layout.entries.push_back({19, 19, "B"});
    WriteLayout();
    EXPECT_EQ(Failure(Strict()), "Code 3041 - Error!!! Opening [B]");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A", "game.iml", "game.ims"}));
}

TEST_F(StrictRebuild, RefusesWhatTheWindowAccepts) {
    m_prefix = "";
    Add(18, 18, "A", test::RandomBytes(3, 1));
    const std::string iml = m_folder / "game.iml";
    // The lines of a layout that starts in another way are checked, too.
    const auto failure = [&](const std::string& count) {
        m_layout.count = count;
        WriteLayout();
        test::WriteText(iml, test::ReadText(iml).replace(0, 5, "[sys]"));
        return Failure(Strict());
    };
    for (const char* ending : {"[/LOC]\r\n", ""}) {
        m_layout.ending = ending;
        EXPECT_EQ(failure("3"), iml + ", line 24: the number of entries is 3, but there are 2");
        EXPECT_EQ(failure("1"), iml + ", line 24: the number of entries is 1, but there are 2");
        EXPECT_EQ(failure("x"), iml + ", line 24: the number of entries is 0, but there are 2");
    }
    m_layout.count = "0";
    WriteLayout();
    test::WriteText(iml, test::ReadText(iml).substr(0, test::ReadText(iml).find("0        17 ")));
    EXPECT_EQ(Failure(Strict()), "The layout " + iml + " has no number of entries");
    m_layout.count.reset();
    WriteLayout();
    const std::string text = test::ReadText(iml);
    const auto replaced = [&](const std::string& from, const std::string& to) {
        test::WriteText(iml, std::string(text).replace(text.find(from), from.size(), to));
        return Failure(Strict());
    };
    // Two lines behind a count line that comes too early, as in a damaged track table, there is no entry.
    EXPECT_EQ(replaced("[LOC]\r\n", "[LOC]\r\n# the number of entries: 2\r\n"),
              iml + ", line 26: no entry: the path has to start with a quote in column 28");
    EXPECT_EQ(replaced("0        17 ", "0        -1 "),
              "The layout " + iml + " has no entry of its leading structures");
    WriteLayout();
    m_leading.pop_back();
    test::WriteWhole(m_folder / "game.ims", m_leading);
    EXPECT_EQ(Failure(Strict()), "The file " + (m_folder / "game.ims") + " is shorter than the layout says");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A", "game.iml", "game.ims"}));
}

TEST_F(StrictRebuild, RefusesToReplaceItsInputs) {
    m_prefix = "";
    Add(18, 18, "A", test::RandomBytes(3, 1));
    WriteLayout();
    SRebuildRequest request = Strict();
    request.manner = EOutputManner::CommitReplace;
    request.outputPath = m_folder / "A";
    EXPECT_EQ(Failure(request), "The image would replace " + (m_folder / "A") + ", which the layout lists");
    request.outputPath = m_folder / "game.ims";
    EXPECT_EQ(Failure(request), "The image would replace " + (m_folder / "game.ims"));
    EXPECT_EQ(test::ReadWhole(m_folder / "game.ims"), m_leading);
}

TEST_F(StrictRebuild, FindsFilesBelowTheGivenFolderIgnoringCase) {
    ASSERT_TRUE(MakeFolder(m_folder / "files") && MakeFolder(m_folder / "files/Data"));
    test::WriteWhole(m_folder / "files/Data/level1.bin", test::RandomBytes(70, 1));
    test::WriteWhole(m_folder / "files/Data/LEVEL2.BIN", test::RandomBytes(80, 2));
    test::WriteWhole(m_folder / "files/Data/level2.bin", test::RandomBytes(90, 3));
    m_layout.entries = {{18, 18, "DATA\\LEVEL1.BIN"}, {19, 19, "Data\\level2.bin"}, {20, 20, "data/LEVEL2.BIN"}};
    WriteLayout();
    SRebuildRequest request = Strict();
    request.filesFolder = m_folder / "files/";
    RebuildImage(request, m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso"),
              CdWith({{18, test::RandomBytes(70, 1)}, {19, test::RandomBytes(90, 3)}, {20, test::RandomBytes(80, 2)}}));
}

}  // namespace
}  // namespace vantrel
