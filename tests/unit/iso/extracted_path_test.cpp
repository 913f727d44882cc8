// Which paths of an image may become files.
#include "iso/extracted_path.h"

#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

TEST(NamesOfTest, BackslashesSeparate) {
    EXPECT_EQ(NamesOf("A\\B\\C.BIN"), (std::vector<std::string>{"A", "B", "C.BIN"}));
    EXPECT_EQ(NamesOf("A"), std::vector<std::string>{"A"});
    EXPECT_EQ(NamesOf("\\A"), (std::vector<std::string>{"", "A"}));
}

TEST(NameProblemTest, RefusesEverywhereWhatLeavesTheFolder) {
    for (const ENameRules rules : {ENameRules::Posix, ENameRules::Windows}) {
        EXPECT_EQ(NameProblem("SYSTEM.CNF", rules), "");
        EXPECT_EQ(NameProblem("A B", rules), "");
        EXPECT_EQ(NameProblem("..A", rules), "");
        EXPECT_NE(NameProblem("", rules), "");
        EXPECT_NE(NameProblem(".", rules), "");
        EXPECT_NE(NameProblem("..", rules), "");
        EXPECT_NE(NameProblem("A/B", rules), "");
        EXPECT_NE(NameProblem(std::string(256, 'A'), rules), "");
    }
}

TEST(NameProblemTest, RefusesOnWindowsWhatWindowsCannotHold) {
    for (const char* name :
         {"A:B",   "C:",  "A*",      "A?",  "A\"B", "A<",       "A>",     "A|B", "A..",    "A ",         "A .",
          "A\x01", "CON", "con.txt", "NUL", "COM1", "lpt9.bin", "AUX .x", "PRN", "CONIN$", "conout$.log"}) {
        EXPECT_EQ(NameProblem(name, ENameRules::Posix), "") << name;
        EXPECT_NE(NameProblem(name, ENameRules::Windows), "") << name;
    }
    for (const char* name : {"CONS", "A.", "COM", "COM0", "COM10", "LPTX", "NULL.BIN", ".A", "CONIN"}) {
        EXPECT_EQ(NameProblem(name, ENameRules::Windows), "") << name;
    }
}

TEST(FindClashTest, FindsEqualPaths) {
    const SPathClash clash = FindClash({"A", "B", "C\\A", "B"}, false);
    EXPECT_EQ(clash.first, "B");
    EXPECT_EQ(clash.second, "B");
    EXPECT_EQ(FindClash({"A", "B", "C\\A"}, true).second, "");
    EXPECT_EQ(FindClash({"A", "AB", "A.B", "C\\A", "C\\AB"}, true).second, "") << "one begins with the other";
}

TEST(FindClashTest, FindsAFileThatIsAFolderToo) {
    const SPathClash clash = FindClash({"A\\B", "A!", "A", "A B"}, false);
    EXPECT_EQ(clash.first, "A");
    EXPECT_EQ(clash.second, "A\\B");
}

TEST(FindClashTest, FoldsCasesOnlyWhenAsked) {
    EXPECT_EQ(FindClash({"Dir\\a.bin", "DIR\\A.BIN"}, false).second, "");
    EXPECT_NE(FindClash({"Dir\\a.bin", "DIR\\A.BIN"}, true).second, "");
    EXPECT_EQ(FindClash({"DIR.\\A", "DIR\\A."}, false).second, "");
    EXPECT_NE(FindClash({"DIR.\\A", "DIR\\A."}, true).second, "");
}

TEST(FolderFoldsCaseTest, LeavesNothingBehind) {
    CTestFolder folder;
#ifndef _WIN32
    EXPECT_FALSE(FolderFoldsCase(folder.Path())) << "the temporary folder is expected to tell cases apart";
#endif
    EXPECT_TRUE(folder.Names().empty());
}

TEST(FolderFoldsCaseTest, AFolderThatCannotBeProbedTellsCasesApart) {
    const CTestFolder folder;
    EXPECT_FALSE(FolderFoldsCase(folder / "missing/"));
    EXPECT_TRUE(folder.Names().empty());
}

}  // namespace
}  // namespace vantrel::test
