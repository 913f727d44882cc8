#include "tests/window/driver/picture.h"

#include <cstdio>
#include <cstdlib>

#include "files/native_file.h"
#include "tests/window/driver/poll.h"

namespace vantrel::test {

void TakePicture(const std::string& name, const RECT& rectangle, EPictured pictured) {
    const char* folder = std::getenv("VANTREL_PICTURES");
    if (folder == nullptr) {
        return;
    }
    const char* kind = pictured == EPictured::Still ? "still" : "moving";
    std::printf("@picture %s %s %ldx%ld+%ld+%ld\n", kind, name.c_str(), rectangle.right - rectangle.left,
                rectangle.bottom - rectangle.top, rectangle.left, rectangle.top);
    std::fflush(stdout);
    const std::string taken = std::string(folder) + "\\" + name + ".taken";
    Require("picture " + name, [&taken] { return FileKindOf(taken) == EFileKind::File; });
    RemoveFile(taken);
}

}  // namespace vantrel::test
