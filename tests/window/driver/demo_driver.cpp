// The demonstration of ./run: operates the window through both CSO conversions of the image "sample.iso" in a folder
// and takes pictures of them.
#include <cstdio>
#include <string>

#include "files/native_file.h"
#include "files/path.h"
#include "resources/resource_ids.h"
#include "tests/window/driver/picture.h"
#include "tests/window/driver/tested_program.h"

namespace vantrel::test {
namespace {

/// The sample has tens of thousands of blocks.
constexpr Milliseconds kLongConversion{900'000};

/// Chooses a file, presses a button, takes pictures of the conversion and the done message, and closes the message.
void Convert(const CTestedProgram& program, const CDrivenDialog& dialog, const std::string& file, int button,
             const std::string& name) {
    dialog.Choose(program.Folder() + file);
    dialog.Press(button);
    const auto isHalfDone = [&] {
        return 2 * dialog.ProgressPosition().value_or(0) > dialog.ProgressRange().value_or(1);
    };
    Require(
        "progress of " + name, [&] { return isHalfDone() || HasBox(program); }, kLongConversion);
    TakePicture(name + "-running", dialog.ScreenRectangle(), EPictured::Moving);
    const CDrivenBox box = WaitForBox(program, kLongConversion);
    TakePicture(name + "-done", dialog.ScreenRectangle(), EPictured::Still);
    std::printf("%s: %s\n", name.c_str(), box.Text().c_str());
    box.Close();
}

void Demonstrate(const std::string& folder) {
    CTestedProgram program(folder);
    const CDrivenDialog dialog = program.Start();
    TakePicture("start", dialog.ScreenRectangle(), EPictured::Still);
    Convert(program, dialog, "sample.iso", IDC_ISO_TO_CSO, "iso2cso");
    Convert(program, dialog, "sample.cso", IDC_CSO_TO_ISO, "cso2iso");
    dialog.Press(IDC_EXIT);
    std::printf("The window was closed; exit status %lu\n", program.WaitForEnd());
}

}  // namespace
}  // namespace vantrel::test

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: demo_driver FOLDER\n");
        return 2;
    }
    try {
        std::string folder = arguments[1];
        for (char& character : folder) {
            character = character == '/' ? '\\' : character;
        }
        vantrel::test::Demonstrate(vantrel::WithSeparator(folder));
        return 0;
    } catch (const vantrel::test::CDriveFailure& failure) {
        std::printf("The demonstration failed: %s\n", failure.what());
        return 1;
    }
}
