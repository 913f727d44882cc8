// Which differences between two directory trees are contradictions.
#include "image/inspect/tree_comparison.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

SDiscFile File(const char* path, std::uint32_t sector, std::int64_t size) {
    return {path, size == 0 ? std::vector<SExtent>() : std::vector<SExtent>{{sector, size}}, sector, size};
}

std::vector<std::string> Compared(const std::vector<SDiscFile>& files, const std::vector<SDiscFile>& others) {
    CLimitedLines problems("more");
    CompareTrees({"", files, {}}, {"UDF: ", others, {}}, problems);
    return problems.Lines();
}

TEST(TreeComparison, FilesHaveOnePlaceAndLength) {
    EXPECT_THAT(Compared({File("A", 20, 5), File("D/B", 30, 0)}, {File("a", 20, 5), File("D/b", 0, 0)}), IsEmpty());
    EXPECT_THAT(Compared({File("A", 20, 5)}, {File("A", 20, 6)}),
                ElementsAre("A is at sector 20 with 5 bytes; UDF: A is at sector 20 with 6 bytes"));
    EXPECT_THAT(Compared({File("A", 20, 5)}, {File("a", 21, 5)}),
                ElementsAre("A is at sector 20 with 5 bytes; UDF: a is at sector 21 with 5 bytes"));
    EXPECT_THAT(Compared({File("A", 20, 5)}, {File("A", 0, 0)}),
                ElementsAre("A is at sector 20 with 5 bytes; UDF: A is empty"));
    EXPECT_THAT(Compared({File("A", 20, 0)}, {File("A", 20, 5)}),
                ElementsAre("A is empty; UDF: A is at sector 20 with 5 bytes"));
    EXPECT_THAT(Compared({File("A", 20, 5), File("B", 30, 5)}, {File("A", 30, 5), File("B", 20, 5)}),
                testing::SizeIs(2));
}

TEST(TreeComparison, EveryPartOfAFileHasOnePlace) {
    const SDiscFile file = {"A", {{20, 2048}, {30, 2048}}, 20, 4096};
    EXPECT_THAT(Compared({file}, {file}), IsEmpty());
    for (const std::string name : {"A", "B"}) {
        EXPECT_THAT(
            Compared({file}, {{name, {{20, 2048}, {40, 2048}}, 20, 4096}}),
            ElementsAre("A is at sector 20 with 4096 bytes; UDF: " + name + " is at sector 20 with 4096 bytes"));
    }
}

TEST(TreeComparison, ATreeMayLackFiles) {
    EXPECT_THAT(Compared({File("A", 20, 5)}, {File("B", 30, 5)}), IsEmpty());
    EXPECT_THAT(Compared({}, {File("B", 30, 5)}), IsEmpty());
}

TEST(TreeComparison, ShortenedNamesMayBelongToOtherFiles) {
    // The name of the first file is that of the second one in the other tree.
    EXPECT_THAT(Compared({File("LONGFILE.TXT", 20, 5), File("LONGF000.TXT", 30, 5)},
                         {File("longfilename.txt", 20, 5), File("longfile.txt", 30, 5)}),
                IsEmpty());
    EXPECT_THAT(Compared({File("LONGFILE.TXT", 20, 0), File("LONGF000.TXT", 30, 5)},
                         {File("longfilename.txt", 0, 0), File("longfile.txt", 30, 5)}),
                IsEmpty());
    EXPECT_THAT(Compared({File("LONGFILE.TXT", 20, 5)}, {File("longfilename.txt", 20, 6)}),
                ElementsAre("LONGFILE.TXT is at sector 20 with 5 bytes; UDF: longfilename.txt is at sector 20 with 6 "
                            "bytes"));
    // Names that differ in case only have no namesake.
    EXPECT_THAT(Compared({File("A.TXT", 20, 5), File("A000.TXT", 30, 5)}, {File("a.txt", 30, 5), File("A.TXT", 20, 5)}),
                IsEmpty());
}

}  // namespace
}  // namespace vantrel
