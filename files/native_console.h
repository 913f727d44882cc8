// Set-up of the system's console for the console program; implemented in the native_file sources.
#pragma once

namespace vantrel {

/// Makes the console interpret the program's output as UTF-8. Output to files and pipes is always UTF-8.
void UseUtf8Console();

}  // namespace vantrel
