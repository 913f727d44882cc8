#include "iso/edit/occupied_sectors.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(OccupiedSectors, JoinsRunsThatTouchOrOverlap) {
    COccupiedSectors sectors;
    sectors.Add(10, 12);
    sectors.Add(20, 25);
    sectors.Add(12, 15);
    sectors.Add(23, 30);
    sectors.Add(5, 5);
    EXPECT_TRUE(sectors.IsFree(0, 10));
    EXPECT_TRUE(sectors.IsFree(15, 20));
    EXPECT_FALSE(sectors.IsFree(14, 16));
    EXPECT_FALSE(sectors.IsFree(19, 21));
    EXPECT_FALSE(sectors.IsFree(29, 40));
    EXPECT_TRUE(sectors.IsFree(30, 1000));
    sectors.Add(1050, 1060);
    sectors.Add(1045, 1055);
    EXPECT_FALSE(sectors.IsFree(1058, 1059)) << "a longer run behind";
    sectors.Add(0, 100);
    EXPECT_FALSE(sectors.IsFree(16, 17));
    EXPECT_TRUE(sectors.IsFree(100, 101));
}

TEST(OccupiedSectors, EndsBeforeALimit) {
    COccupiedSectors sectors;
    EXPECT_EQ(sectors.EndBefore(50), 0U);
    sectors.Add(10, 12);
    sectors.Add(20, 25);
    EXPECT_EQ(sectors.EndBefore(10), 0U);
    EXPECT_EQ(sectors.EndBefore(20), 12U);
    EXPECT_EQ(sectors.EndBefore(21), 25U);
    EXPECT_EQ(sectors.EndBefore(1000), 25U);
}

}  // namespace
}  // namespace vantrel
