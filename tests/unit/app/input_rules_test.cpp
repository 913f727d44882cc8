// Which buttons each kind of input enables.
#include "app/input_rules.h"

#include <gtest/gtest.h>

#include "tests/unit/app/control_names.h"

namespace vantrel {
namespace {

using test::ListOf;

std::string ListFor(std::string_view extension) {
    const std::optional<ButtonStates> states = ButtonsFor(extension);
    return states ? ListOf(*states) : "none";
}

TEST(InputRules, EachExtensionSetsAllNineButtonsInItsOrder) {
    EXPECT_EQ(ListFor(".iso"),
              "+iso2iml, +iso2bin, +iso2dax, +check postgap, +iso2cso, -vantrel, -bin2iso, -dax2iso, -cso2iso");
    EXPECT_EQ(ListFor(".iml"),
              "+vantrel, -iso2iml, -iso2bin, -bin2iso, -check postgap, -iso2dax, -dax2iso, -iso2cso, -cso2iso");
    EXPECT_EQ(ListFor(".bin"),
              "+bin2iso, -iso2iml, -vantrel, -iso2bin, -iso2dax, -dax2iso, -check postgap, -iso2cso, -cso2iso");
    EXPECT_EQ(ListFor(".dax"),
              "+dax2iso, -bin2iso, -iso2iml, -vantrel, -iso2bin, -iso2dax, -check postgap, -iso2cso, -cso2iso");
    EXPECT_EQ(ListFor(".cso"),
              "+cso2iso, -bin2iso, -iso2iml, -vantrel, -iso2bin, -iso2dax, -dax2iso, -check postgap, -iso2cso");
}

TEST(InputRules, OtherExtensionsAreUnknown) {
    for (const char* extension : {"", ".", ".img", ".ISO", ".Iso", "iso", ".iso ", ".isox", ".is"}) {
        EXPECT_FALSE(ButtonsFor(extension).has_value()) << extension;
    }
}

TEST(InputRules, AllNineButtonsAreGreyedWithoutInput) {
    EXPECT_EQ(ListOf(ButtonsWithoutInput()),
              "-check postgap, -iso2iml, -vantrel, -iso2bin, -bin2iso, -iso2dax, -dax2iso, -iso2cso, -cso2iso");
}

}  // namespace
}  // namespace vantrel
