// Writes an edited image: as a new file, or over the image itself.
#pragma once

#include <functional>
#include <string>

#include "files/byte_source.h"
#include "files/checked_file.h"
#include "iso/edit/edit_plan.h"
#include "operation/operation.h"

namespace vantrel {

/// The image as it was before the edit.
struct SEditBase {
    CByteSource& image;
    std::string name;                      ///< path for messages
    std::function<void()> throwIfDamaged;  ///< throws CRefused if a read has failed
};

/// Writes the image of the plan to an open, empty output. Fails if the base or a file with new content cannot be read
/// completely, and if writing fails.
void WriteEdited(const SEditBase& base, const SEditPlan& plan, CCheckedOutput& output, COperation& operation);

/// Applies the plan to the image that it was made for. Reads and writes only what changes.
void ApplyEdit(const SEditPlan& plan, CCheckedUpdate& image, COperation& operation);

}  // namespace vantrel
