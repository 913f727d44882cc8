// Escaping, and the columns of characters.
#include "console/messages.h"

#include <gtest/gtest.h>

#include "console/characters.h"

namespace vantrel {
namespace {

TEST(Messages, NamesCannotControlTheTerminal) {
    EXPECT_EQ(Escaped("game \u30b2 caf\u00e9.iso"), "game \u30b2 caf\u00e9.iso");
    EXPECT_EQ(Escaped("a\x1b[2Jb\n\r\x7f"), "a\\x1B[2Jb\\x0A\\x0D\\x7F");
    EXPECT_EQ(Escaped("\u009b31m"), "\\xC2\\x9B31m") << "a control character beyond ASCII";
    EXPECT_EQ(Escaped("\u202egpj.exe"), "\\xE2\\x80\\xAEgpj.exe") << "reverses the direction";
    EXPECT_EQ(Escaped("\u2066a\u2069\u206a"), "\\xE2\\x81\\xA6a\\xE2\\x81\\xA9\u206a") << "isolates a direction";
    EXPECT_EQ(Escaped("a\u2027\u2028b\u2029"), "a\u2027\\xE2\\x80\\xA8b\\xE2\\x80\\xA9") << "ends a line";
    EXPECT_EQ(Escaped("\xff\xc3"), "\\xFF\\xC3") << "invalid UTF-8";
    EXPECT_EQ(Escaped("\xff\xc3(a)\xe2\x82(\xe2\x82"), "\\xFF\\xC3(a)\\xE2\\x82(\\xE2\\x82") << "incomplete";
    EXPECT_EQ(Escaped("\xc1\xbf\xe0\x9f\xbf\xf0\x8f\xbf\xbf"), "\\xC1\\xBF\\xE0\\x9F\\xBF\\xF0\\x8F\\xBF\\xBF")
        << "too long";
    EXPECT_EQ(Escaped("\xf4\x90\x80\x80\xf5"), "\\xF4\\x90\\x80\\x80\\xF5") << "beyond Unicode";
    EXPECT_EQ(Escaped("\u0080\u07ff\u0800\uffff\U00010000\U0010ffff"),
              "\\xC2\\x80\u07ff\u0800\uffff\U00010000\U0010ffff");
    EXPECT_EQ(Escaped("\xed\xa0\x80"), "\\xED\\xA0\\x80") << "a surrogate";
    EXPECT_EQ(Escaped(std::string("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(Escaped("\ufffd"), "\ufffd") << "the replacement character itself";
}

TEST(Messages, Columns) {
    EXPECT_EQ(ColumnsOf("abc"), 3);
    EXPECT_EQ(ColumnsOf("\u30b2\u30fc\u30e0"), 6);
    EXPECT_EQ(ColumnsOf("e\u0301"), 1);
    EXPECT_EQ(ColumnsOf("\U0001F3AE"), 2);
    EXPECT_EQ(ShortenedTo(6, "abcdef"), "abcdef");
    EXPECT_EQ(ShortenedTo(5, "abcdef"), "ab...");
    EXPECT_EQ(ShortenedTo(2, "abcdef"), "..");
    EXPECT_EQ(ShortenedTo(0, "abcdef"), "");
    EXPECT_EQ(ShortenedTo(6, "\u30b2\u30fc\u30e0\u30b2"), "\u30b2...") << "no half characters";
}

}  // namespace
}  // namespace vantrel
