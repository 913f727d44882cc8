#include "compress/block_report.h"

#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

CBlockReport::CBlockReport(COperation& operation, std::int64_t blockCount, bool fromFirstBlock)
    : m_operation(operation),
      m_blockCount(blockCount),
      m_step(blockCount / 100),
      m_countdown(fromFirstBlock ? 0 : m_step) {}

bool CBlockReport::ShowWhenDue(std::int64_t block) {
    --m_countdown;
    if (m_countdown >= 1) {
        return false;
    }
    m_countdown = m_step;
    Show(block);
    return true;
}

void CBlockReport::Show(std::int64_t block) {
    const std::int64_t percent = m_step > 0 ? block / m_step : PercentOf(block, m_blockCount);
    m_operation.SetPane(EPane::Percent, PercentText(percent));
    m_operation.SetPane(EPane::Bytes, Format("%d block", static_cast<std::int32_t>(block)));
}

}  // namespace vantrel
