#include "iml/layout/layout_names.h"

#include "files/path.h"

namespace vantrel {

namespace {

std::string WithExtension(const std::string& path, const char* extension) {
    const SPathParts parts = SplitPath(path);
    return parts.drive + parts.folder + parts.name + extension;
}

}  // namespace

std::string LeadingPathOf(const std::string& layoutPath) {
    return WithExtension(layoutPath, ".ims");
}

std::string GapPathOf(const std::string& layoutPath) {
    return WithExtension(layoutPath, ".gaps");
}

}  // namespace vantrel
