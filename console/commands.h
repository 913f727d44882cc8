// The commands of the console program, in groups.
#pragma once

#include "console/command.h"

namespace vantrel {

/// iso2cso, cso2iso, iso2dax, dax2iso
void AddCompressCommands(Commands& commands);

/// convert
void AddConvertCommand(Commands& commands);

/// info, verify, list
void AddInspectCommands(Commands& commands);

/// extract
void AddExtractCommand(Commands& commands);

/// iso2iml
void AddExportCommand(Commands& commands);

/// iso2bin, bin2iso
void AddRawCommands(Commands& commands);

/// iml2iso
void AddRebuildCommand(Commands& commands);

/// replace
void AddReplaceCommand(Commands& commands);

/// check-postgap, add-postgap
void AddPostgapCommands(Commands& commands);

}  // namespace vantrel
