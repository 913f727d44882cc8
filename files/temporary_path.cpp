#include "files/temporary_path.h"

#include <chrono>
#include <random>
#include <thread>

#include "files/native_file.h"
#include "files/path.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::chrono::milliseconds kRetryDelay{20};

}  // namespace

std::string TemporaryPathBeside(const std::string& path) {
    std::random_device random;
    return FolderOf(path) + Format(".vantrel-%08x.tmp", random());
}

void RemoveTemporary(const std::string& path) {
    if (!RemoveFile(path) && FileKindOf(path) != EFileKind::Missing) {
        std::this_thread::sleep_for(kRetryDelay);
        RemoveFile(path);
    }
}

}  // namespace vantrel
