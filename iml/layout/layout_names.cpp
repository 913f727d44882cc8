#include "iml/layout/layout_names.h"

#include "files/path.h"

namespace vantrel {

std::string LeadingPathOf(const std::string& layoutPath) {
    return WithExtension(layoutPath, ".ims");
}

std::string GapPathOf(const std::string& layoutPath) {
    return WithExtension(layoutPath, ".gaps");
}

}  // namespace vantrel
