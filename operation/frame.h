// The parts of the operation frame that conversions share: greying the commands, and the update after each unit.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "operation/operation.h"

namespace vantrel {

/// Greys the given commands in the given order.
void DisableCommands(COperation& operation, std::initializer_list<ECommand> commands);

/// Greys the ten commands of the frame: iso2iml, vantrel, iso2bin, bin2iso, browse, check postgap, iso2dax,
/// dax2iso, iso2cso, cso2iso.
void DisableFrameCommands(COperation& operation);

/// done x 100 / total in whole percent; 100 when there is nothing to do.
std::int64_t PercentOf(std::int64_t done, std::int64_t total);

/// A count of units as a range of the progress bar, which is 32 bits wide.
std::int32_t ProgressRange(std::int64_t units);

/// The update after unit `index` (from 0) of `count`: percent pane, bar, byte pane, messages. The byte count is
/// (index + 1) x `unitBytes` in 32 bits, so it wraps beyond 2,147,483,647 and is shown negative.
void ShowUnitDone(COperation& operation, std::int64_t index, std::int64_t count, std::uint32_t unitBytes);

/// The update after a stretch of units, by which `done` of `count` are done: percent pane, bar, messages.
void ShowStretchDone(COperation& operation, std::int64_t done, std::int64_t count);

}  // namespace vantrel
