#include "tests/window/driver/picture.h"

#include <cstdio>
#include <cstdlib>

#include "files/native_file.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {

void TakePicture(const std::string& name, const RECT& rectangle) {
    const char* folder = std::getenv("VANTREL_PICTURES");
    if (folder == nullptr) {
        return;
    }
    std::printf("@picture %s %ld %ld %ld %ld\n", name.c_str(), rectangle.left, rectangle.top,
                rectangle.right - rectangle.left, rectangle.bottom - rectangle.top);
    std::fflush(stdout);
    const std::string taken = std::string(folder) + "\\" + name + ".taken";
    Require("picture " + name, [&taken] { return FileKindOf(taken) == EFileKind::File; });
    RemoveFile(taken);
}

}  // namespace vantrel::test
