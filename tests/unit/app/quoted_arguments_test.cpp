// Command lines that a program splits into the original words.
#include "app/converter/quoted_arguments.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(QuotedArguments, QuotesEveryWord) {
    EXPECT_EQ(QuotedCommandLine({"a.exe", "b c", "&%^()"}), "\"a.exe\" \"b c\" \"&%^()\"");
    EXPECT_EQ(QuotedCommandLine({"a", ""}), "\"a\" \"\"");
}

TEST(QuotedArguments, EscapesBackslashesOnlyBeforeQuotes) {
    EXPECT_EQ(QuotedCommandLine({R"(C:\a b\c)"}), R"("C:\a b\c")");
    EXPECT_EQ(QuotedCommandLine({R"(C:\a b\)"}), R"("C:\a b\\")");
    EXPECT_EQ(QuotedCommandLine({R"(a"b)", R"(a\"b)"}), R"("a\"b" "a\\\"b")");
}

}  // namespace
}  // namespace vantrel
