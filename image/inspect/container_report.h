// Reports on the container around an image: header fields, ratio, and what other readers may not accept.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "image/form.h"
#include "image/inspect/report.h"

namespace vantrel {

/// Members as the form has them; nullopt for a plain image. The file must have been opened successfully as that form
/// before; throws CRefused if it has become unreadable.
std::optional<CReport> ReportOnContainer(const std::string& path, EForm form);

/// What the container lacks of its image, in words. Throws like ReportOnContainer.
std::vector<std::string> ContainerProblems(const std::string& path, EForm form);

}  // namespace vantrel
