// What the console program needs of the system's console. Implemented where the file handles are.
#pragma once

namespace vantrel {

/// Makes a console of the system show the program's UTF-8 texts as they are meant. Output that goes to a file or a pipe
/// is UTF-8 in any case.
void UseUtf8Console();

}  // namespace vantrel
