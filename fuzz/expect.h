// What a fuzz target claims beyond "it does not crash".
#pragma once

#include <cstdio>
#include <cstdlib>

namespace vantrel::fuzz {

/// Ends the process when a claim is wrong, so that the input is kept as a finding.
inline void Expect(bool claim, const char* what) {
    if (!claim) {
        std::fprintf(stderr, "claim does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace vantrel::fuzz
