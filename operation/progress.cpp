#include "operation/progress.h"

#include <algorithm>

#include "operation/text.h"

namespace vantrel {

std::int64_t PercentOf(std::int64_t done, std::int64_t total) {
    return total > 0 ? done * 100 / total : 100;
}

void ShowPercent(COperation& operation, std::int64_t done, std::int64_t total) {
    operation.SetPane(EPane::Percent, PercentText(PercentOf(done, total)));
}

CProgress::CProgress(COperation& operation, std::int64_t total, std::int64_t done)
    : m_operation(operation), m_total(total), m_done(done) {
    m_operation.SetTotal(total);
}

void CProgress::Advance(std::int64_t units) {
    m_done += units;
    Show();
    m_operation.Yield();
}

void CProgress::AdvanceWithBytes(std::uint32_t unitBytes) {
    ++m_done;
    Show();
    const auto bytes = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_done) * unitBytes);
    m_operation.SetPane(EPane::Bytes, BytesText(bytes));
    m_operation.Yield();
}

void CProgress::Finish() {
    m_operation.SetDone(m_total);
}

void CProgress::Show() {
    ShowPercent(m_operation, m_done, m_total);
    m_operation.SetDone(std::min(m_done, m_total));
}

CBlockProgress::CBlockProgress(COperation& operation, std::int64_t blocks, EFirst first)
    : m_operation(operation),
      m_blocks(blocks),
      m_step(blocks / 100),
      m_countdown(first == EFirst::AtBlock0 ? 0 : m_step) {}

void CBlockProgress::ShowIfDue(std::int64_t block) {
    --m_countdown;
    if (m_countdown < 1) {
        m_countdown = m_step;
        Show(block);
        m_operation.Yield();
    }
}

void CBlockProgress::Show(std::int64_t block) {
    const std::int64_t percent = m_step > 0 ? block / m_step : PercentOf(block, m_blocks);
    m_operation.SetPane(EPane::Percent, PercentText(percent));
    m_operation.SetPane(EPane::Bytes, Format("%d block", static_cast<std::int32_t>(block)));
}

}  // namespace vantrel
