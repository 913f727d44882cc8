#include "files/temporary_path.h"

#include <random>

#include "files/path.h"
#include "operation/text.h"

namespace vantrel {

std::string TemporaryPathBeside(const std::string& path) {
    std::random_device random;
    return FolderOf(path) + Format(".vantrel-%08x.tmp", random());
}

}  // namespace vantrel
