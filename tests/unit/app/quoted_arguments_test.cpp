// Command lines from which a program reads exactly the words that were put in.
#include "app/converter/quoted_arguments.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(QuotedArguments, PlainWordsAreQuotedToo) {
    EXPECT_EQ(QuotedCommandLine({"a.exe", "b c", "&%^()"}), "\"a.exe\" \"b c\" \"&%^()\"");
    EXPECT_EQ(QuotedCommandLine({"a", ""}), "\"a\" \"\"");
}

TEST(QuotedArguments, BackslashesCountOnlyBeforeQuotes) {
    EXPECT_EQ(QuotedCommandLine({R"(C:\a b\c)"}), R"("C:\a b\c")");
    EXPECT_EQ(QuotedCommandLine({R"(C:\a b\)"}), R"("C:\a b\\")");
    EXPECT_EQ(QuotedCommandLine({R"(a"b)", R"(a\"b)"}), R"("a\"b" "a\\\"b")");
}

}  // namespace
}  // namespace vantrel
