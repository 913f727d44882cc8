// Runs a conversion command on its files, one after the other.
#pragma once

#include "console/conversion_command.h"

namespace vantrel {

/// Protects existing files, prints results, failures and, for several files, a summary. Stops at the first failure
/// unless told to keep going.
EExit RunConversions(const CConversionCommand& command, const SConversionOptions& options);

}  // namespace vantrel
