// Reports on raw images: the kinds of their sectors, and the tracks of a CUE sheet.
#pragma once

#include <string>

#include "image/report.h"
#include "raw/raw_disc.h"

namespace vantrel {

/// Members: for a sheet, "tracks" (see ReportOnTracks); then, of the data track, "first_address" (if stored),
/// "sectors", "mode_1", "mode_2_form_1", "mode_2_form_2", "other", "audio" (numbers of sectors). Throws CRefused if the
/// track's file is unreadable.
CReport ReportOnRawImage(const SRawDisc& disc);

/// A list with "number", "mode", "sectors" (null if unknown), and "file" (path) of each track.
CReport::List ReportOnTracks(const SRawDisc& disc);

}  // namespace vantrel
