// The commands of the console program, one function for each room that they come from.
#pragma once

#include "console/conversion_command.h"

namespace vantrel {

/// iso2cso, cso2iso, iso2dax, dax2iso
void AddCompressCommands(CLI::App& app, ChosenCommand& chosen);

/// iso2iml
void AddExportCommands(CLI::App& app, ChosenCommand& chosen);

/// iso2bin, bin2iso
void AddRawCommands(CLI::App& app, ChosenCommand& chosen);

/// info, verify, list
void AddInspectCommands(CLI::App& app, ChosenCommand& chosen);

/// iml2iso, check-postgap, add-postgap
void AddRebuildCommands(CLI::App& app, ChosenCommand& chosen);

/// extract
void AddExtractCommand(CLI::App& app, ChosenCommand& chosen);

}  // namespace vantrel
