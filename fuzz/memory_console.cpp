// The console of fuzzed conversions: none. Defines all of files/native_console.h.
#include "files/native_console.h"

namespace vantrel {

void UseUtf8Console() {}

void UseBinaryOutput() {}

bool IsTerminal(EStream /*stream*/) {
    return false;
}

int TerminalColumns() {
    return 80;
}

}  // namespace vantrel
