// The status texts of both CSO directions, which are shown a hundred times a run and not at every block.
#pragma once

#include <cstdint>

#include "operation/operation.h"

namespace vantrel {

/// Shows percentage and block number every hundredth of the blocks; at every block when there are fewer than 100.
class CBlockReport {
public:
    /// The first update comes at block 0 when `fromFirstBlock` is set, and after a hundredth of the blocks otherwise.
    CBlockReport(COperation& operation, std::int64_t blockCount, bool fromFirstBlock);

    /// Counts one block; true when it was time to show it, which has then been done.
    bool ShowWhenDue(std::int64_t block);

    /// Shows a block's figures. With 100 blocks and more the last percentage may exceed 100.
    void Show(std::int64_t block);

private:
    COperation& m_operation;
    std::int64_t m_blockCount;
    std::int64_t m_step;
    std::int64_t m_countdown;
};

}  // namespace vantrel
