#include "app/input_rules.h"

#include <algorithm>
#include <initializer_list>

namespace vantrel {
namespace {

/// What one extension offers, in the order in which the commands are set.
struct SInputRule {
    std::string_view extension;
    std::size_t enabledCount;
    std::array<ECommand, kInputCommandCount> commands;
};

using enum ECommand;

constexpr SInputRule kRules[] = {
    {".iso", 5, {IsoToIml, IsoToBin, IsoToDax, CheckPostgap, IsoToCso, Vantrel, BinToIso, DaxToIso, CsoToIso}},
    {".iml", 1, {Vantrel, IsoToIml, IsoToBin, BinToIso, CheckPostgap, IsoToDax, DaxToIso, IsoToCso, CsoToIso}},
    {".bin", 1, {BinToIso, IsoToIml, Vantrel, IsoToBin, IsoToDax, DaxToIso, CheckPostgap, IsoToCso, CsoToIso}},
    {".dax", 1, {DaxToIso, BinToIso, IsoToIml, Vantrel, IsoToBin, IsoToDax, CheckPostgap, IsoToCso, CsoToIso}},
    {".cso", 1, {CsoToIso, BinToIso, IsoToIml, Vantrel, IsoToBin, IsoToDax, DaxToIso, CheckPostgap, IsoToCso}},
};

constexpr SInputRule kNothing = {
    "", 0, {CheckPostgap, IsoToIml, Vantrel, IsoToBin, BinToIso, IsoToDax, DaxToIso, IsoToCso, CsoToIso}};

CommandStates StatesOf(const SInputRule& rule) {
    CommandStates states{};
    for (std::size_t i = 0; i < states.size(); ++i) {
        states[i] = {rule.commands[i], i < rule.enabledCount};
    }
    return states;
}

bool IsOneOf(char letter, std::string_view letters) {
    return letters.find(letter) != std::string_view::npos;
}

/// The length of the conversion that begins after a '%': flags, width, precision, size and letter; 0 when what follows
/// is no conversion.
std::size_t ConversionLength(std::string_view text) {
    std::size_t length = 0;
    const auto skip = [&](std::string_view letters) {
        while (length < text.size() && IsOneOf(text[length], letters)) {
            ++length;
        }
    };
    skip("-+ #0");
    skip("*0123456789");
    skip(".");
    skip("*0123456789");
    skip("hlLqjztwFNI");
    const bool complete = length < text.size() && IsOneOf(text[length], "diouxXeEfgGaAcCsSpn");
    return complete ? length + 1 : 0;
}

}  // namespace

std::optional<CommandStates> CommandsFor(std::string_view extension) {
    const auto* const rule = std::find_if(std::begin(kRules), std::end(kRules),
                                          [&](const SInputRule& each) { return each.extension == extension; });
    if (rule == std::end(kRules)) {
        return std::nullopt;
    }
    return StatesOf(*rule);
}

CommandStates NoCommands() {
    return StatesOf(kNothing);
}

std::string ExpandAsPattern(std::string_view folder) {
    std::string expanded;
    for (std::size_t i = 0; i < folder.size(); ++i) {
        if (folder[i] != '%') {
            expanded += folder[i];
        } else if (folder.substr(i + 1).starts_with('%')) {
            expanded += '%';
            ++i;
        } else {
            i += ConversionLength(folder.substr(i + 1));
        }
    }
    return expanded;
}

}  // namespace vantrel
