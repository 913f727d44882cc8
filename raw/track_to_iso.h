// The data track of a raw image into a plain image, with every sector checked.
#pragma once

#include "operation/operation.h"
#include "raw/bin_to_iso.h"

namespace vantrel {

/// Writes the user data of the first data track, of Mode 1 or Mode 2. Sync field, mode and EDC of every sector must be
/// right, no sector may hold more than 2048 bytes, and no bytes may be left over; otherwise the conversion fails with
/// the ranges of such sectors, or with `ignoreErrors`, warns of them. Also warns of tracks that are left out. Fails
/// if the input is no raw image (see ReadRawDisc). The request's `strict` counts as true.
void ConvertDataTrack(const SBinToIsoRequest& request, COperation& operation);

}  // namespace vantrel
