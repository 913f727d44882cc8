// The assertion of the fuzz targets.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace vantrel::fuzz {

/// Aborts if a condition is false, so that the fuzzer keeps the input as a finding.
inline void Expect(bool condition, const char* expectation) {
    if (!condition) {
        std::fprintf(stderr, "expectation failed: %s\n", expectation);
        std::abort();
    }
}

}  // namespace vantrel::fuzz
