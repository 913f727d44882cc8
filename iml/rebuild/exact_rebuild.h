// Restores the exported image, bit for bit. For the rebuilds of both media; never in the window.
#pragma once

#include "iml/rebuild/layout_pass.h"
#include "iml/rebuild/placements.h"
#include "iml/rebuild/rebuild.h"
#include "operation/operation.h"

namespace vantrel {

/// Places every file at the sector that the layout records, restores the stored gaps, writes zeros elsewhere and leaves
/// the volume size unchanged. Fails for a file that does not fit its range.
void RebuildExactly(const SRebuildRequest& request, const CLayoutPass& pass, CPlacements& placements,
                    COperation& operation);

}  // namespace vantrel
