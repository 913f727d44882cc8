// The sectors that a layout assigns to files.
#include "iml/layout/sector_range.h"

#include <gtest/gtest.h>

namespace vantrel::test {
namespace {

void ExpectRange(CRangeRule& rule, std::uint32_t start, std::uint32_t size, std::uint32_t first, std::uint32_t last) {
    const SSectorRange range = rule.Next(start, size);
    EXPECT_EQ(range.first, first) << start << " " << size;
    EXPECT_EQ(range.last, last) << start << " " << size;
}

TEST(SectorRangeTest, RoundsUpToSectors) {
    CRangeRule rule;
    ExpectRange(rule, 300, 2048, 300, 300);
    ExpectRange(rule, 301, 2049, 301, 302);
    ExpectRange(rule, 303, 0, 303, 303);
    ExpectRange(rule, 304, 1, 304, 304);
    ExpectRange(rule, 305, 4096, 305, 306);
    ExpectRange(rule, 310, 0xFFFFFFFF, 310, 310 + 0x1FFFFF);
    ExpectRange(rule, 0xFFFFFFFF, 4096, 0xFFFFFFFF, 0);
}

TEST(SectorRangeTest, ASecondFileOfTheSameStartAndPaddingIsReducedToItsLastSector) {
    CRangeRule rule;
    ExpectRange(rule, 300, 2049, 300, 301);
    ExpectRange(rule, 300, 4097, 302, 302);
    ExpectRange(rule, 300, 2049, 301, 301);
}

TEST(SectorRangeTest, ADifferentPaddingIsRememberedInstead) {
    CRangeRule rule;
    ExpectRange(rule, 300, 0, 300, 300);
    ExpectRange(rule, 300, 0, 300, 300);
    ExpectRange(rule, 300, 4096, 301, 301);  // no padding, like an empty file
    ExpectRange(rule, 300, 4095, 300, 301);
    ExpectRange(rule, 300, 4096, 300, 301);  // compared with the previous file
}

TEST(SectorRangeTest, TheFirstFileIsComparedWithSectorZeroAnd2032BytesOfPadding) {
    CRangeRule rule;
    ExpectRange(rule, 0, 2048 + 16, 1, 1);
    CRangeRule other;
    ExpectRange(other, 0, 2048 + 17, 0, 1);
}

}  // namespace
}  // namespace vantrel::test
