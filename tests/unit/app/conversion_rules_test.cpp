// The window's rules for each conversion: greyed buttons, level list, bitmap of the bar, ending.
#include "app/conversion_rules.h"

#include <gtest/gtest.h>

#include "tests/unit/app/control_names.h"

namespace vantrel {
namespace {

using test::ListOf;
using enum EConversion;

constexpr const char* kTen =
    "iso2iml, vantrel, iso2bin, bin2iso, browse, check postgap, iso2dax, dax2iso, iso2cso, cso2iso";
constexpr const char* kBinAndCso =
    "iso2iml, vantrel, iso2bin, bin2iso, iso2dax, dax2iso, browse, check postgap, iso2cso, cso2iso";

std::string GreyedBy(EConversion conversion) {
    return ListOf(RulesOf(conversion).greyed);
}

TEST(ConversionRules, EveryConversionHasItsOwn) {
    for (int i = 0; i <= static_cast<int>(AddPostgap); ++i) {
        EXPECT_EQ(static_cast<int>(RulesOf(static_cast<EConversion>(i)).conversion), i);
    }
}

TEST(ConversionRules, GreyTheButtonsInTheirOrder) {
    for (const EConversion conversion :
         {ImlToIso, ImlToCdImage, ImlToDvdImage, BinToIso, CsoToIso, IsoToDax, DaxToIso}) {
        EXPECT_EQ(GreyedBy(conversion), kTen);
    }
    EXPECT_EQ(GreyedBy(IsoToIml),
              "iso2iml, vantrel, iso2bin, bin2iso, check postgap, iso2dax, dax2iso, iso2cso, cso2iso, browse");
    EXPECT_EQ(GreyedBy(IsoToBin), kBinAndCso);
    EXPECT_EQ(GreyedBy(IsoToCso), kBinAndCso);
    EXPECT_EQ(GreyedBy(CheckPostgap),
              "iso2iml, vantrel, iso2bin, bin2iso, check postgap, dax2iso, iso2dax, iso2cso, cso2iso");
    EXPECT_EQ(GreyedBy(AddPostgap), "iso2iml, vantrel, iso2bin, bin2iso, check postgap, dax2iso, iso2dax");
}

TEST(ConversionRules, GreyTheLevelListOfConversionsThatReadIt) {
    for (const EConversion conversion : {IsoToCso, CsoToIso, IsoToDax}) {
        EXPECT_EQ(RulesOf(conversion).levelList, ELevelList::GreyedAtBegin);
    }
    EXPECT_EQ(RulesOf(AddPostgap).levelList, ELevelList::GreyedWithBar);
    for (const EConversion conversion :
         {IsoToIml, ImlToIso, ImlToCdImage, ImlToDvdImage, IsoToBin, BinToIso, DaxToIso, CheckPostgap}) {
        EXPECT_EQ(RulesOf(conversion).levelList, ELevelList::Unused);
    }
}

TEST(ConversionRules, FillTheBarWithTheCdBitmapForCdImages) {
    for (const EConversion conversion : {ImlToCdImage, CheckPostgap, AddPostgap}) {
        EXPECT_EQ(RulesOf(conversion).fillBitmap, IDB_PROGRESS_CD);
    }
    for (const EConversion conversion :
         {IsoToIml, ImlToIso, ImlToDvdImage, IsoToBin, BinToIso, IsoToCso, CsoToIso, IsoToDax, DaxToIso}) {
        EXPECT_EQ(RulesOf(conversion).fillBitmap, IDB_PROGRESS_DVD);
    }
}

TEST(ConversionRules, EndInTheStatesOfTheConversion) {
    EXPECT_EQ(ListOf(RulesOf(IsoToIml).ending.states),
              "-iso2iml, -vantrel, -iso2bin, -bin2iso, -check postgap, -iso2dax, -dax2iso, +Full Path, +Relative Path");
    EXPECT_FALSE(RulesOf(IsoToIml).ending.acceptsDrops);
    for (const EConversion conversion : {ImlToIso, ImlToCdImage, ImlToDvdImage}) {
        EXPECT_EQ(ListOf(RulesOf(conversion).ending.states), "-iso2iml, -vantrel, -iso2bin, -bin2iso, +browse");
        EXPECT_FALSE(RulesOf(conversion).ending.acceptsDrops);
    }
    for (const SEnding& ending : {RulesOf(CheckPostgap).ending, RulesOf(AddPostgap).ending, CancelEnding()}) {
        EXPECT_EQ(ListOf(ending.states), "+browse, +level list");
        EXPECT_TRUE(ending.acceptsDrops);
    }
    for (const EConversion conversion : {IsoToBin, BinToIso, IsoToCso, CsoToIso, IsoToDax, DaxToIso}) {
        EXPECT_EQ(ListOf(RulesOf(conversion).ending.states), "");
        EXPECT_FALSE(RulesOf(conversion).ending.acceptsDrops);
    }
}

TEST(ConversionRules, AllowOnlyAnotherInputAfterCompletion) {
    EXPECT_EQ(
        ListOf(CompletionStates()),
        "-iso2iml, -vantrel, -iso2bin, -bin2iso, +browse, -check postgap, -iso2dax, -dax2iso, -iso2cso, -cso2iso, "
        "+level list");
}

}  // namespace
}  // namespace vantrel
