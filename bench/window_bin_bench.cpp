// The time of a BIN of 64 MiB through the window, from the press of "bin2iso" to the done message, and through the
// console program.
#include <chrono>
#include <cstdio>
#include <string>

#include "files/utf.h"
#include "resources/resource_ids.h"
#include "tests/support/image_builder.h"
#include "tests/window/driver/tested_program.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kBinBytes = std::size_t{64} << 20;
constexpr std::size_t kRawSector = 2352;
constexpr std::size_t kLeadingSectors = 64;

double SecondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Bytes CdImage() {
    SImageDescription description;
    description.kind = EImageKind::Cd;
    description.postgap = EPostgap::Counted;
    const std::size_t sectors = kBinBytes / kRawSector - kLeadingSectors - kPostgapSectors;
    description.files = {{"DATA.BIN", RandomBytes(sectors * kImageSector, 1)}};
    return BuildImage(description).bytes;
}

void RunConsole(const std::string& program, const std::string& arguments) {
    std::wstring line = WideOf("\"" + program + "\" " + arguments);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process) ==
        FALSE) {
        throw CDriveFailure("the console program did not start");
    }
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    if (status != 0) {
        throw CDriveFailure("the console program failed");
    }
}

void Measure(const std::string& console) {
    const CTestFolder folder;
    WriteWhole(folder / "game.iso", CdImage());
    RunConsole(console, "iso2bin -q \"" + (folder / "game.iso") + "\"");
    std::printf("BIN of %zu bytes\n", ReadWhole(folder / "game.bin").size());
    CTestedProgram program(folder.Path());
    for (int round = 0; round < 3; ++round) {
        const CDrivenDialog dialog = program.Start();
        dialog.Choose(folder / "game.bin");
        const double window = SecondsOf([&] {
            dialog.Press(IDC_BIN_TO_ISO);
            WaitForBox(program, kConversion);
        });
        WaitForBox(program).Close();
        dialog.Press(IDC_EXIT);
        program.WaitForEnd();
        const double alone = SecondsOf([&] {
            RunConsole(console, "bin2iso -q -f -o \"" + (folder / "c.iso") + "\" \"" + (folder / "game.bin") + "\"");
        });
        std::printf("window %.2f s, console %.2f s\n", window, alone);
    }
}

}  // namespace
}  // namespace vantrel::test

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: window_bin_bench CONSOLE-PROGRAM\n");
        return 2;
    }
    try {
        vantrel::test::Measure(arguments[1]);
        return 0;
    } catch (const vantrel::test::CDriveFailure& failure) {
        std::printf("%s\n", failure.what());
        return 1;
    }
}
