// The working folder expanded as a pattern.
#include "app/folder_pattern.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(FolderPattern, KeepsAFolderWithoutPercentSigns) {
    EXPECT_EQ(ExpandAsPattern("C:\\Games\\ä\\"), "C:\\Games\\ä\\");
    EXPECT_EQ(ExpandAsPattern(""), "");
}

TEST(FolderPattern, InterpretsConversions) {
    EXPECT_EQ(ExpandAsPattern("C:\\100%%\\"), "C:\\100%\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%d-b\\"), "C:\\a-b\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%s%s\\"), "C:\\a\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%-08.3lldz\\"), "C:\\az\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%*dz\\"), "C:\\az\\");
    EXPECT_EQ(ExpandAsPattern("C:\\50% off\\"), "C:\\50ff\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%nb\\"), "C:\\ab\\");
    EXPECT_EQ(ExpandAsPattern("a%#xb"), "ab");
}

TEST(FolderPattern, DropsAPercentSignWithoutConversion) {
    EXPECT_EQ(ExpandAsPattern("C:\\100%\\"), "C:\\100\\");
    EXPECT_EQ(ExpandAsPattern("100%"), "100");
    EXPECT_EQ(ExpandAsPattern("%%%"), "%");
    EXPECT_EQ(ExpandAsPattern("a%50"), "a50");
}

}  // namespace
}  // namespace vantrel
