// Giving back the very image that was exported. For the rebuilds of both media, outside the window only.
#pragma once

#include "iml/rebuild/layout_pass.h"
#include "iml/rebuild/rebuild.h"
#include "iml/rebuild/placements.h"
#include "operation/operation.h"

namespace vantrel {

/// Places every file of the lists at the sector that the layout records, puts the stored gaps back, leaves zeros
/// elsewhere and the volume size as the leading structures have it. A file that does not fit its range ends the
/// rebuild.
void RebuildExactly(const SRebuildRequest& request, const CLayoutPass& pass, CSideLists& lists, COperation& operation);

}  // namespace vantrel
