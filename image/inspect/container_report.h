// What can be said of the file around an image: header fields, ratio, and what other readers may dislike.
#pragma once

#include <string>
#include <vector>

#include "console/inspect_command.h"
#include "image/form.h"

namespace vantrel {

/// The members of one form; an empty report for a plain image. The file has been opened as that form before.
Report ReportOnContainer(const std::string& path, EForm form);

/// What such a file lacks of the image that it stands for, in words.
std::vector<std::string> ContainerProblems(const std::string& path, EForm form);

}  // namespace vantrel
