// Text mode, the line buffer, numbers, and paths in layouts.
#include "iml/layout/text_reader.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "files/native_file.h"
#include "iml/layout/layout_path.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

CTextReader ReaderOf(const std::string& text, std::int64_t start = 0) {
    return CTextReader(
        [text](std::int64_t position, std::span<std::uint8_t> buffer) {
            const std::size_t offset = std::min(static_cast<std::size_t>(position), text.size());
            const std::size_t count = std::min(buffer.size(), text.size() - offset);
            std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(offset), count, buffer.begin());
            return count;
        },
        start);
}

TEST(TextReader, LineEndsOfBothKinds) {
    CTextReader reader = ReaderOf("one\r\ntwo\nthr\ree\r\n\r\nlast");
    CLineBuffer line;
    for (const char* expected : {"one", "two", "thr\ree", "", "last"}) {
        ASSERT_TRUE(reader.ReadLine(line));
        EXPECT_EQ(line.Text(), expected);
    }
    EXPECT_FALSE(reader.ReadLine(line));
    EXPECT_EQ(line.Text(), "last");
}

TEST(TextReader, ShorterLineKeepsTheRestOfTheEarlierOne) {
    CTextReader reader = ReaderOf("abcdefgh\nxy\n");
    CLineBuffer line;
    ASSERT_TRUE(reader.ReadLine(line) && reader.ReadLine(line));
    EXPECT_EQ(line.Text(), "xy");
    // The line feed became a terminator, and another terminator follows.
    EXPECT_EQ(line.Piece(4, 10), "efgh");
    EXPECT_EQ(line.Piece(4, 2), "ef");
    EXPECT_EQ(line.Piece(2, 5), "");
    EXPECT_EQ(line.Piece(5000, 5), "");
}

TEST(TextReader, LongLinesComeInPieces) {
    CTextReader reader = ReaderOf(std::string(5000, 'x') + "\nend\n");
    CLineBuffer line;
    std::vector<std::size_t> lengths;
    while (reader.ReadLine(line)) {
        lengths.push_back(line.Text().size());
    }
    EXPECT_EQ(lengths, (std::vector<std::size_t>{2047, 2047, 906, 3}));
}

TEST(TextReader, PositionsAreBytesOfTheFile) {
    const std::string text = std::string(16'383, 'a') +
                             "\r\nb\r\n\x1a"
                             "c";
    CTextReader reader = ReaderOf(text);
    for (int i = 0; i < 16'383; ++i) {
        ASSERT_EQ(reader.Next(), 'a');
    }
    EXPECT_EQ(reader.Next(), '\n');
    EXPECT_EQ(reader.Position(), 16'385);
    CTextReader second = ReaderOf(text, reader.Position());
    EXPECT_EQ(second.Next(), 'b');
    EXPECT_EQ(second.Next(), '\n');
    EXPECT_EQ(second.Next(), CTextReader::kEnd);
    EXPECT_EQ(second.Next(), CTextReader::kEnd);
}

TEST(TextReader, Numbers) {
    EXPECT_EQ(DecimalOf("42      "), 42);
    EXPECT_EQ(DecimalOf("  \t7x8"), 7);
    EXPECT_EQ(DecimalOf("-3"), -3);
    EXPECT_EQ(DecimalOf("+3"), 3);
    EXPECT_EQ(DecimalOf("x"), 0);
    EXPECT_EQ(DecimalOf(""), 0);
    EXPECT_EQ(DecimalOf("- 3"), 0);
    EXPECT_EQ(DecimalOf("2147483648"), -2147483647 - 1);
    EXPECT_EQ(DecimalOf("4294967297"), 1);
}

TEST(LayoutPath, ShownPath) {
    EXPECT_EQ(ShownPath("SYSTEM.CNF"), "\\..\\SYSTEM.CNF");
    EXPECT_EQ(ShownPath("\\Game\\SUB\\A.B.C"), "\\..\\A.B.C");
    EXPECT_EQ(ShownPath("C:\\Game/A"), "C:\\..\\A");
    EXPECT_EQ(ShownPath("D:A.BIN"), "D:\\..\\A.BIN");
    EXPECT_EQ(ShownPath(""), "\\..\\");
}

TEST(LayoutPath, ResolvesBelowTheFolder) {
    const test::CTestFolder folder;
    ASSERT_TRUE(MakeFolder(folder / "Sub"));
    test::WriteText(folder / "Sub/Name.Bin", "x");
    CPathResolver resolver(folder.Path());
    EXPECT_EQ(resolver.Resolve("SUB\\NAME.BIN"), folder / "Sub/Name.Bin");
    EXPECT_EQ(resolver.Resolve("Sub/NAME.bin"), folder / "Sub/Name.Bin");
    EXPECT_EQ(resolver.Resolve("sub\\other"), folder / "Sub/other");
    EXPECT_EQ(resolver.Resolve("sub.\\name.bin."), folder / "Sub/Name.Bin");
    EXPECT_EQ(resolver.Resolve("sub\\other."), folder / "Sub/other.");
    EXPECT_EQ(resolver.Resolve(folder / "sub/name.bin"), folder / "Sub/Name.Bin");
    EXPECT_EQ(resolver.Resolve(""), folder.Path());
    CPathResolver literal("");
    EXPECT_EQ(literal.Resolve("SUB\\NAME.BIN"), "SUB\\NAME.BIN");
}

}  // namespace
}  // namespace vantrel
