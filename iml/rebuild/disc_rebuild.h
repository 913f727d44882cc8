// Rebuilds the image that was exported: as it was, or with changed files and structures that describe them. Never in
// the window.
#pragma once

#include "iml/layout/layout_reader.h"
#include "iml/rebuild/rebuild.h"
#include "iso/edit/edit_report.h"
#include "operation/operation.h"

namespace vantrel {

/// Rebuilds the image of a layout of that shape by the rules Edited and Exact. Fails for files that the directories do
/// not have, for files of the directories that the layout does not list, and for names of one place with different
/// contents.
SEditReport RebuildDisc(const SRebuildRequest& request, const SLayoutShape& shape, COperation& operation);

}  // namespace vantrel
