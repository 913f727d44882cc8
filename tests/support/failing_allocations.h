// Allocations that fail on demand: those of memory whose size a file determines, which report a failure without an
// exception. A program that links vantrel_failing_allocations has them.
#pragma once

namespace vantrel::test {

/// That many of these allocations succeed, and the next one fails; negative: all succeed.
inline int g_allocationsLeft = -1;

}  // namespace vantrel::test
