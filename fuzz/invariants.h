// Invariants of every transactional conversion.
#pragma once

#include "fuzz/expect.h"
#include "fuzz/memory_disk.h"
#include "fuzz/silent_operation.h"

namespace vantrel::fuzz {

/// Runs a transactional conversion, and returns whether it completed. A failed conversion must leave the disk
/// unchanged.
template <typename Conversion>
bool CompletesOrLeavesNothing(Conversion conversion) {
    const auto before = WholeDisk();
    const bool completed = !EndingOf(conversion);
    Expect(completed || WholeDisk() == before, "a failed conversion leaves nothing behind");
    return completed;
}

}  // namespace vantrel::fuzz
