// Broken lines of help texts.
#include "console/wrapping.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(Wrapping, LinesHaveAtMost80Characters) {
    const std::string word(30, 'x');
    EXPECT_EQ(Wrapped(word + " " + word + " " + word, 26), word + " " + word + "\n" + word + "\n");
    EXPECT_EQ(Wrapped(std::string(80, 'x'), 26), std::string(80, 'x') + "\n");
    EXPECT_EQ(Wrapped(std::string(100, 'x'), 26), std::string(100, 'x') + "\n") << "no place to break";
    EXPECT_EQ(Wrapped("a\n\nb\n", 26), "a\n\nb\n");
    EXPECT_EQ(Wrapped("", 26), "");
}

TEST(Wrapping, ContinuesBelowTheText) {
    const std::string word(30, 'x');
    EXPECT_EQ(Wrapped("  -l N    " + word + " " + word + " " + word, 10),
              "  -l N    " + word + " " + word + "\n          " + word + "\n");
    EXPECT_EQ(Wrapped("  " + word + " " + word + " " + word, 10), "  " + word + " " + word + "\n  " + word + "\n");
}

}  // namespace
}  // namespace vantrel
