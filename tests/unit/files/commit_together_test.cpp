// All outputs appear, or none.
#include "files/commit_together.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <map>

#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::CTestFolder;

/// Expects exactly these files in a folder. Folders have the content "".
void ExpectFiles(const CTestFolder& folder, const std::map<std::string, std::string>& expected) {
    std::map<std::string, std::string> files;
    for (const std::string& name : folder.Names()) {
        files[name] = FileKindOf(folder / name) == EFileKind::File ? test::ReadText(folder / name) : "";
    }
    EXPECT_EQ(files, expected);
}

/// Two outputs, written and not yet committed.
class CPair {
public:
    CPair(const std::string& first, const std::string& second, EOutputManner manner) {
        Open(m_first, first, manner);
        Open(m_second, second, manner);
    }

    bool Commit() {
        const std::array<COutputFile*, 2> outputs = {&m_first, &m_second};
        return CommitTogether(outputs, m_problem);
    }

    const std::string& Problem() const { return m_problem; }

private:
    static void Open(COutputFile& output, const std::string& path, EOutputManner manner) {
        ASSERT_TRUE(output.Open(path, manner));
        output.Write(test::Bytes{'n', 'e', 'w'});
    }

    COutputFile m_first;
    COutputFile m_second;
    std::string m_problem;
};

TEST(CommitTogether, BothAppear) {
    for (const EOutputManner manner :
         {EOutputManner::InPlace, EOutputManner::CommitNew, EOutputManner::CommitReplace}) {
        const CTestFolder folder;
        CPair pair(folder / "a", folder / "b", manner);
        EXPECT_TRUE(pair.Commit());
        ExpectFiles(folder, {{"a", "new"}, {"b", "new"}});
    }
}

TEST(CommitTogether, OlderFilesAreReplaced) {
    const CTestFolder folder;
    test::WriteText(folder / "a", "older a");
    test::WriteText(folder / "b", "older b");
    CPair pair(folder / "a", folder / "b", EOutputManner::CommitReplace);
    EXPECT_TRUE(pair.Commit());
    ExpectFiles(folder, {{"a", "new"}, {"b", "new"}});
}

TEST(CommitTogether, FirstIsUndoneIfTheSecondFails) {
    const CTestFolder folder;
    CPair pair(folder / "a", folder / "b", EOutputManner::CommitNew);
    test::WriteText(folder / "b", "appeared meanwhile");
    EXPECT_FALSE(pair.Commit());
    EXPECT_NE(pair.Problem().find(folder / "b"), std::string::npos) << pair.Problem();
    ExpectFiles(folder, {{"b", "appeared meanwhile"}});
}

TEST(CommitTogether, OlderFirstIsRestoredIfTheSecondFails) {
    const CTestFolder folder;
    test::WriteText(folder / "a", "older a");
    CPair pair(folder / "a", folder / "b", EOutputManner::CommitReplace);
    ASSERT_TRUE(MakeFolder(folder / "b"));
    EXPECT_FALSE(pair.Commit());
    EXPECT_NE(pair.Problem().find(folder / "b"), std::string::npos) << pair.Problem();
    ExpectFiles(folder, {{"a", "older a"}, {"b", ""}});
}

TEST(CommitTogether, NothingChangesIfTheFirstFails) {
    const CTestFolder folder;
    test::WriteText(folder / "b", "older b");
    CPair pair(folder / "a", folder / "b", EOutputManner::CommitReplace);
    ASSERT_TRUE(MakeFolder(folder / "a"));
    EXPECT_FALSE(pair.Commit());
    ExpectFiles(folder, {{"a", ""}, {"b", "older b"}});
}

TEST(CommitTogether, AMissingFolderIsAProblem) {
    const CTestFolder folder;
    CJointCommit commit;
    EXPECT_EQ(commit.PlaceFor(folder / "none/a"), "");
    EXPECT_EQ(commit.Problem(), "Cannot create a folder in " + (folder / "none/") + ": No such file or directory");
    ExpectFiles(folder, {});
}

TEST(CommitTogether, AnOutputInPlaceThatFailedIsAProblem) {
    const CTestFolder folder;
    COutputFile output;
    ASSERT_TRUE(output.Open(folder / "a", EOutputManner::InPlace));
    EXPECT_FALSE(output.Seek(-1));
    CJointCommit commit;
    EXPECT_FALSE(commit.Add(output));
    EXPECT_EQ(commit.Problem(), "Cannot write " + (folder / "a") + ": Invalid argument");
    ExpectFiles(folder, {{"a", ""}});
}

/// The paths of a folder that was not made would be relative.
TEST(CommitTogether, WithoutAFolderNothingIsRemoved) {
    const CTestFolder folder;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    test::WriteText("lock", "whose?");
    CStaging staging;
    EXPECT_FALSE(staging.Open("none/"));
    staging.Keep();
    staging.Undo();
    EXPECT_EQ(staging.Problem(), "Cannot create a folder in none/: No such file or directory");
    ASSERT_TRUE(MakeFolder("gone"));
    std::filesystem::current_path(folder / "gone");
    ASSERT_TRUE(RemoveFolder(folder / "gone"));
    EXPECT_FALSE(staging.Open(""));
    EXPECT_EQ(staging.Problem(), "Cannot create a folder in .: No such file or directory");
    std::filesystem::current_path(before);
    ExpectFiles(folder, {{"lock", "whose?"}});
}

TEST(CommitTogether, NothingRemainsWithoutCommit) {
    const CTestFolder folder;
    { const CPair pair(folder / "a", folder / "b", EOutputManner::CommitNew); }
    ExpectFiles(folder, {});
}

}  // namespace
}  // namespace vantrel
