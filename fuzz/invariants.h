// Claims that hold for every conversion whose outputs appear together or not at all.
#pragma once

#include "fuzz/expect.h"
#include "fuzz/memory_file.h"
#include "fuzz/silent_operation.h"

namespace vantrel::fuzz {

/// Runs such a conversion; whether it completed. When it did not, the disk must be as it was before.
template <typename Conversion>
bool CompletesOrLeavesNothing(Conversion conversion) {
    const auto before = WholeDisk();
    const bool completed = !EndingOf(conversion);
    Expect(completed || WholeDisk() == before, "a conversion that fails leaves nothing behind");
    return completed;
}

}  // namespace vantrel::fuzz
