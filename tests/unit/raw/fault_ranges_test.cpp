// Faults are combined into ranges.
#include "raw/fault_ranges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(FaultRanges, NeighboursWithTheSameTextFormOneRange) {
    CFaultRanges faults("sector");
    for (const unsigned number : {3U, 4U, 5U, 7U, 9U}) {
        faults.Add(number, "wrong EDC");
    }
    faults.Add(10, "wrong sync field");
    EXPECT_THAT(faults.Lines(), testing::ElementsAre("sectors 3 to 5: wrong EDC", "sector 7: wrong EDC",
                                                     "sector 9: wrong EDC", "sector 10: wrong sync field"));
    EXPECT_FALSE(faults.IsEmpty());
    EXPECT_TRUE(CFaultRanges("block").IsEmpty());
    EXPECT_TRUE(CFaultRanges("block").Lines().empty());
}

}  // namespace
}  // namespace vantrel
