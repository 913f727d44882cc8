// Which commands each kind of input offers, and the work folder written out as a pattern.
#include "app/input_rules.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace vantrel {
namespace {

using enum ECommand;

std::set<ECommand> EnabledFor(std::string_view extension) {
    std::set<ECommand> enabled;
    const std::optional<CommandStates> states = CommandsFor(extension);
    if (!states) {
        ADD_FAILURE() << extension << " is not known";
        return enabled;
    }
    for (const SCommandState& state : *states) {
        if (state.enabled) {
            enabled.insert(state.command);
        }
    }
    return enabled;
}

const std::set<ECommand> kNine = {IsoToIml, Vantrel,  IsoToBin, BinToIso,    IsoToDax,
                                  DaxToIso, IsoToCso, CsoToIso, CheckPostgap};

std::set<ECommand> Mentioned(const CommandStates& states) {
    std::set<ECommand> mentioned;
    for (const SCommandState& state : states) {
        mentioned.insert(state.command);
    }
    return mentioned;
}

TEST(InputRules, EachExtensionOffersItsCommands) {
    EXPECT_EQ(EnabledFor(".iso"), (std::set<ECommand>{IsoToIml, IsoToBin, IsoToDax, CheckPostgap, IsoToCso}));
    EXPECT_EQ(EnabledFor(".iml"), std::set<ECommand>{Vantrel});
    EXPECT_EQ(EnabledFor(".bin"), std::set<ECommand>{BinToIso});
    EXPECT_EQ(EnabledFor(".dax"), std::set<ECommand>{DaxToIso});
    EXPECT_EQ(EnabledFor(".cso"), std::set<ECommand>{CsoToIso});
}

TEST(InputRules, EveryExtensionSetsAllNineCommands) {
    for (const char* extension : {".iso", ".iml", ".bin", ".dax", ".cso"}) {
        EXPECT_EQ(Mentioned(CommandsFor(extension).value()), kNine) << extension;
    }
}

TEST(InputRules, OtherExtensionsAreNotKnown) {
    for (const char* extension : {"", ".", ".img", ".ISO", ".Iso", "iso", ".iso ", ".isox", ".is"}) {
        EXPECT_FALSE(CommandsFor(extension).has_value()) << extension;
    }
}

TEST(InputRules, NothingIsOfferedWithoutInput) {
    EXPECT_EQ(Mentioned(NoCommands()), kNine);
    for (const SCommandState& state : NoCommands()) {
        EXPECT_FALSE(state.enabled);
    }
    EXPECT_EQ(NoCommands().front().command, CheckPostgap);
    EXPECT_EQ(NoCommands().back().command, CsoToIso);
}

TEST(InputRules, FolderWithoutPercentStaysAsItIs) {
    EXPECT_EQ(ExpandAsPattern("C:\\Games\\ä\\"), "C:\\Games\\ä\\");
    EXPECT_EQ(ExpandAsPattern(""), "");
}

TEST(InputRules, PercentSignsInTheFolderAreInterpreted) {
    EXPECT_EQ(ExpandAsPattern("C:\\100%%\\"), "C:\\100%\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%d-b\\"), "C:\\a-b\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%s%s\\"), "C:\\a\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%-08.3lldz\\"), "C:\\az\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%*dz\\"), "C:\\az\\");
    EXPECT_EQ(ExpandAsPattern("C:\\50% off\\"), "C:\\50ff\\");
    EXPECT_EQ(ExpandAsPattern("C:\\a%nb\\"), "C:\\ab\\");
}

TEST(InputRules, PercentSignThatBeginsNoConversionVanishes) {
    EXPECT_EQ(ExpandAsPattern("C:\\100%\\"), "C:\\100\\");
    EXPECT_EQ(ExpandAsPattern("100%"), "100");
    EXPECT_EQ(ExpandAsPattern("%%%"), "%");
    EXPECT_EQ(ExpandAsPattern("a%50"), "a50");
}

}  // namespace
}  // namespace vantrel
