// Wildcard patterns among the files of a command.
#include "console/file_patterns.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

TEST(FilePatterns, Match) {
    EXPECT_TRUE(MatchesPattern("game.iso", "*.iso"));
    EXPECT_TRUE(MatchesPattern("GAME.ISO", "g*.iso"));
    EXPECT_TRUE(MatchesPattern("game.iso", "????.iso"));
    EXPECT_TRUE(MatchesPattern("a.b.iso", "*.*o"));
    EXPECT_TRUE(MatchesPattern("", "*"));
    EXPECT_TRUE(MatchesPattern("aXbXc", "a*b*c"));
    EXPECT_FALSE(MatchesPattern("game.isox", "*.iso"));
    EXPECT_FALSE(MatchesPattern("game.iso", "?.iso"));
    EXPECT_FALSE(MatchesPattern("", "?"));
    EXPECT_FALSE(MatchesPattern("abc", ""));
}

TEST(FilePatterns, ExpandIntoSortedNames) {
    const test::CTestFolder folder;
    for (const char* name : {"b.iso", "a.iso", "c.cso", "[x].iso"}) {
        test::WriteText(folder / name, "");
    }
    EXPECT_THAT(ExpandPatterns({folder / "*.iso", folder / "c.cso"}),
                testing::ElementsAre(folder / "[x].iso", folder / "a.iso", folder / "b.iso", folder / "c.cso"));
    EXPECT_THAT(ExpandPatterns({folder / "*.dax"}), testing::ElementsAre(folder / "*.dax"));
    EXPECT_THAT(ExpandPatterns({"/nowhere/*.iso"}), testing::ElementsAre("/nowhere/*.iso"));
}

}  // namespace
}  // namespace vantrel
