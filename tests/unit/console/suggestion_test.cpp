// Suggestions for misspelt words.
#include "console/suggestion.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(Suggestion, EditDistance) {
    EXPECT_EQ(EditDistance("", ""), 0U);
    EXPECT_EQ(EditDistance("level", "level"), 0U);
    EXPECT_EQ(EditDistance("", "abc"), 3U);
    EXPECT_EQ(EditDistance("abc", ""), 3U);
    EXPECT_EQ(EditDistance("levl", "level"), 1U);
    EXPECT_EQ(EditDistance("levell", "level"), 1U);
    EXPECT_EQ(EditDistance("lavel", "level"), 1U);
    EXPECT_EQ(EditDistance("leevl", "level"), 1U) << "swapped neighbours are one mistake";
    EXPECT_EQ(EditDistance("kitten", "sitting"), 3U);
}

TEST(Suggestion, TheNearestWord) {
    const std::vector<std::string> words = {"iso2cso", "cso2iso", "list", "info"};
    EXPECT_EQ(NearestWord("is2cso", words), "iso2cso");
    EXPECT_EQ(NearestWord("ifno", words), "info");
    EXPECT_EQ(NearestWord("lst", words), "list");
    EXPECT_EQ(NearestWord("convert", words), "");
    EXPECT_EQ(NearestWord("x", words), "") << "shares nothing with any word";
    EXPECT_EQ(NearestWord("", words), "");
    EXPECT_EQ(NearestWord(std::string(1 << 20, 'x'), words), "");
}

}  // namespace
}  // namespace vantrel
