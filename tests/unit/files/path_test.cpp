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

TEST(Path, BaseNameEndsAtTheFirstDotAndAfterThirtyUnits) {
    EXPECT_EQ(BaseNameOf("game.v1.iml"), "game");
    EXPECT_EQ(BaseNameOf("game"), "game");
    EXPECT_EQ(BaseNameOf(".iso"), "");
    EXPECT_EQ(BaseNameOf("123456789012345678901234567890.iso"), "123456789012345678901234567890");
    EXPECT_EQ(BaseNameOf("1234567890123456789012345678901.iso"), "123456789012345678901234567890");
    EXPECT_EQ(BaseNameOf("12345678901234567890123456789\xC3\xA9.iso"), "12345678901234567890123456789\xC3\xA9");
    EXPECT_EQ(BaseNameOf("последняя фантазия.iso"), "последняя фантазия");
    EXPECT_EQ(BaseNameOf("ファイナルファンタジータクティクス獅子戦争.iso"),
              "ファイナルファンタジータクティクス獅子戦争");
    const std::string kanji = "獅子戦争獅子戦争獅子戦争獅子戦争獅子戦争獅子戦争獅子戦争獅子";
    EXPECT_EQ(BaseNameOf(kanji + ".iso"), kanji);
    EXPECT_EQ(BaseNameOf(kanji + "戦.iso"), kanji);
}

TEST(Path, ABaseNameNeverEndsWithinASurrogatePair) {
    const std::string joker = "\xF0\x9F\x83\x8F";  // two UTF-16 units
    EXPECT_EQ(BaseNameOf("1234567890123456789012345678" + joker + "x.iso"), "1234567890123456789012345678" + joker);
    EXPECT_EQ(BaseNameOf("12345678901234567890123456789" + joker + ".iso"), "12345678901234567890123456789");
}

TEST(Path, ABaseNameKeepsInvalidBytes) {
    EXPECT_EQ(BaseNameOf("a\x83\xFF"
                         "b.iso"),
              "a\x83\xFF"
              "b");
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
