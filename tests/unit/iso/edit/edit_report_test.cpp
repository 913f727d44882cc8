// The words of a report.
#include "iso/edit/edit_report.h"

#include <gtest/gtest.h>

namespace vantrel {
namespace {

TEST(EditReport, LinesOfFiles) {
    EXPECT_EQ(LineOf({{"A.BIN"}, 30, 30, 100, 90, {}}), "A.BIN: changed in place at sector 30 (100 bytes, now 90)");
    EXPECT_EQ(LineOf({{"A.BIN", "B.BIN"}, 30, 1200, 70001, 90000, {}}),
              "A.BIN, B.BIN: moved from sector 30 to 1200 (70001 bytes, now 90000)");
}

TEST(EditReport, EveryNameCounts) {
    SEditReport report;
    report.edits = {{{"A", "B"}, 1, 2, 0, 0, {}}, {{"C"}, 3, 3, 0, 0, {}}};
    report.unchanged = 12;
    report.sectorsAdded = 44;
    EXPECT_EQ(SummaryOf(report), "12 files unchanged, 1 changed in place, 2 moved, 44 sectors added");
}

TEST(EditReport, OneFileAndOneSector) {
    SEditReport report;
    report.unchanged = 1;
    report.sectorsAdded = 1;
    EXPECT_EQ(SummaryOf(report), "1 file unchanged, 0 changed in place, 0 moved, 1 sector added");
    report.comparesContent = false;
    EXPECT_EQ(SummaryOf(report), "1 file of unchanged length, 0 changed in place, 0 moved, 1 sector added");
}

}  // namespace
}  // namespace vantrel
