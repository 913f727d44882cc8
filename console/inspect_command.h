// Commands that only look at files: one report for each, for people or as JSON.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <nlohmann/json.hpp>
#include <span>
#include <string>

#include "console/conversion_command.h"

namespace vantrel {

/// A report keeps the order in which its members were put in.
using Report = nlohmann::ordered_json;

struct SInspectCommand {
    std::string name;
    std::string summary;
    std::string examples;
    /// Adds options of the command's own. May be empty.
    std::function<void(CLI::App& command)> addOptions;
    /// Looks at one file. A member "ok" that is false makes the exit status 1. Throws CRefused when there is nothing to
    /// report on.
    std::function<Report(const std::string& file)> inspect;
    /// Prints a report for people. May be empty; the members are printed as lines then.
    std::function<void(const Report& report)> print;
};

/// Adds a command with the options FILE... and --json. When it is the one called for, `chosen` becomes its action.
void AddInspectCommand(CLI::App& app, ChosenCommand& chosen, SInspectCommand command);

/// Prints "name: value" for each member, members of members indented below their name.
void PrintReport(const Report& report, int indent = 0);

/// A text field of an image for people and machines: without the blanks that fill it, control characters as '?'.
std::string FieldText(std::span<const std::uint8_t> field);

}  // namespace vantrel
