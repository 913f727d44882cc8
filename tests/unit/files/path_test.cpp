// Splitting of paths, base names, and letter case of file names.
#include "files/path.h"

#include <gtest/gtest.h>

#include "files/letter_case.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

TEST(Path, SplitsAndJoins) {
    const SPathParts parts = SplitPath("/a.b/c.d.iso");
    EXPECT_EQ(parts.folder, "/a.b/");
    EXPECT_EQ(parts.name, "c.d");
    EXPECT_EQ(parts.extension, ".iso");
    EXPECT_EQ(FolderOf("plain"), "");
    EXPECT_EQ(FileNameOf("/x/.hidden"), ".hidden");
    EXPECT_EQ(WithSeparator("/a"), "/a/");
    EXPECT_EQ(WithSeparator("/a/"), "/a/");
    EXPECT_EQ(WithSeparator(""), "");
}

TEST(Path, BaseNameEndsAtTheFirstDotAndAfterThirtyBytes) {
    EXPECT_EQ(BaseNameOf("game.v1.iml"), "game");
    EXPECT_EQ(BaseNameOf("game"), "game");
    EXPECT_EQ(BaseNameOf(".iso"), "");
    EXPECT_EQ(BaseNameOf("123456789012345678901234567890.iso"), "123456789012345678901234567890");
    EXPECT_EQ(BaseNameOf("1234567890123456789012345678901.iso"), "123456789012345678901234567890");
    EXPECT_EQ(BaseNameOf("12345678901234567890123456789\xC3\xA9.iso"), "12345678901234567890123456789");
}

TEST(LetterCase, FoldsOnlyAsciiLetters) {
    EXPECT_EQ(LowerAscii("@AZ[`az{ \xC3\x84"), "@az[`az{ \xC3\x84");
}

TEST(Path, FindsAFileInAnotherLetterCase) {
    const test::CTestFolder folder;
    test::WriteText(folder / "GAME.ISO", "upper");
    EXPECT_EQ(ResolveFileCase(folder / "game.iso"), folder / "GAME.ISO");
    test::WriteText(folder / "game.iso", "lower");
    EXPECT_EQ(ResolveFileCase(folder / "game.iso"), folder / "game.iso");
    EXPECT_EQ(ResolveFileCase(folder / "other.iso"), folder / "other.iso");
}

}  // namespace
}  // namespace vantrel
