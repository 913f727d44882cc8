// The report tree: types of values, order of members.
#include "image/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace vantrel {
namespace {

TEST(Report, ValuesKeepTheirTypes) {
    EXPECT_EQ(CReport().Get().index(), CReport(nullptr).Get().index());
    EXPECT_EQ(CReport(true).As<bool>(), true);
    EXPECT_EQ(CReport(7U).As<std::int64_t>(), 7);
    EXPECT_EQ(CReport(std::int64_t{-1} << 40).As<std::int64_t>(), -(std::int64_t{1} << 40));
    EXPECT_EQ(CReport(0.5).As<double>(), 0.5);
    EXPECT_EQ(CReport("text").As<std::string>(), "text");
    EXPECT_EQ(CReport(std::vector<std::string>{"a", "b"}).As<CReport::List>(), (CReport::List{"a", "b"}));
    EXPECT_THROW(CReport("text").As<bool>(), std::bad_variant_access);
}

TEST(Report, MembersKeepTheirOrder) {
    CReport report = {{"z", 1}, {"a", CReport::List()}};
    report.Add("m", {{"inner", true}});
    std::vector<std::string> names;
    for (const auto& [name, value] : report.As<CReport::Object>()) {
        names.push_back(name);
    }
    EXPECT_THAT(names, testing::ElementsAre("z", "a", "m"));
    EXPECT_EQ(report["m"]["inner"], true);
    EXPECT_EQ(report.Find("missing"), nullptr);
    EXPECT_EQ(report["z"].Find("z"), nullptr) << "an integer has no members";
    EXPECT_THROW(report["missing"], std::out_of_range);
}

TEST(Report, TheFirstMemberMakesAnObject) {
    CReport report;
    report.Add("first", 1);
    EXPECT_EQ(report, (CReport{{"first", 1}}));
}

}  // namespace
}  // namespace vantrel
