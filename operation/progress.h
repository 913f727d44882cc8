// Progress as conversions report it: percentage, units done and byte counts are formed here and nowhere else.
#pragma once

#include <cstdint>

#include "operation/operation.h"

namespace vantrel {

/// done x 100 / total in whole percent; 100 if there is nothing to do.
std::int64_t PercentOf(std::int64_t done, std::int64_t total);

/// Shows done x 100 / total in the percent pane.
void ShowPercent(COperation& operation, std::int64_t done, std::int64_t total);

/// Counts the units of one conversion.
class CProgress {
public:
    /// Announces `total` units, of which `done` are done.
    CProgress(COperation& operation, std::int64_t total, std::int64_t done = 0);

    /// Counts `units` more: percentage, units done, yield.
    void Advance(std::int64_t units = 1);

    /// Counts one more unit and shows the bytes so far, which are units x `unitBytes`. The product has 32 bits and a
    /// sign, so it wraps beyond 2,147,483,647 and is then shown as a negative number.
    void AdvanceWithBytes(std::uint32_t unitBytes);

    /// Reports all units as done.
    void Finish();

private:
    void Show();

    COperation& m_operation;
    std::int64_t m_total;
    std::int64_t m_done;
};

/// Counts the blocks of one conversion; shows percentage and block number only every hundredth of the blocks, or at
/// every block if there are fewer than 100.
class CBlockProgress {
public:
    /// When the first texts are shown.
    enum class EFirst { AtBlock0, AfterAHundredth };

    CBlockProgress(COperation& operation, std::int64_t blocks, EFirst first);

    /// Shows the texts for `block` (from 0) if they are due, and yields then.
    void ShowIfDue(std::int64_t block);

    /// Shows the texts for `block`. With 100 blocks or more, the last percentage may exceed 100.
    void Show(std::int64_t block);

private:
    COperation& m_operation;
    std::int64_t m_blocks;
    std::int64_t m_step;
    std::int64_t m_countdown;
};

}  // namespace vantrel
