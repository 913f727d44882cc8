#include "operation/frame.h"

#include <algorithm>
#include <limits>

#include "operation/text.h"

namespace vantrel {

void DisableCommands(COperation& operation, std::initializer_list<ECommand> commands) {
    for (const ECommand command : commands) {
        operation.EnableCommand(command, false);
    }
}

void DisableFrameCommands(COperation& operation) {
    DisableCommands(operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso,
                                ECommand::Browse, ECommand::CheckPostgap, ECommand::IsoToDax, ECommand::DaxToIso,
                                ECommand::IsoToCso, ECommand::CsoToIso});
}

std::int64_t PercentOf(std::int64_t done, std::int64_t total) {
    return total > 0 ? done * 100 / total : 100;
}

std::int32_t ProgressRange(std::int64_t units) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(units, 0, std::numeric_limits<std::int32_t>::max()));
}

void ShowUnitDone(COperation& operation, std::int64_t index, std::int64_t count, std::uint32_t unitBytes) {
    const std::int64_t done = index + 1;
    operation.SetPane(EPane::Percent, PercentText(PercentOf(done, count)));
    operation.StepProgress();
    const auto bytes = static_cast<std::int32_t>(static_cast<std::uint32_t>(done) * unitBytes);
    operation.SetPane(EPane::Bytes, BytesText(bytes));
    operation.PumpMessages();
}

void ShowStretchDone(COperation& operation, std::int64_t done, std::int64_t count) {
    operation.SetPane(EPane::Percent, PercentText(PercentOf(done, count)));
    operation.SetProgressPosition(ProgressRange(std::min(done, count)));
    operation.PumpMessages();
}

}  // namespace vantrel
