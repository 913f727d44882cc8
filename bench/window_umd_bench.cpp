// The parts of the time of the window's CSO conversions: an image of 256 MiB through the window, through the engine
// alone with the window's request, and the same number of writes without a conversion. Compressing is compared with a
// loop that resets one stream.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <span>
#include <string>

#include "compress/block_stream.h"
#include "compress/cso.h"
#include "resources/resource_ids.h"
#include "tests/support/test_folder.h"
#include "tests/window/driver/tested_program.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kBlock = 2048;
constexpr std::size_t kBlocks = (std::size_t{256} << 20) / kBlock;
constexpr std::size_t kRun = 12;
constexpr std::size_t kApplicationIdentifier = 33342;

double SecondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// One third each of text, noise and zeros, in runs of several blocks.
void WriteImage(const std::string& path) {
    COutputFile image;
    image.Open(path, EOutputManner::CommitNew);
    for (std::size_t block = 0; block < kBlocks; ++block) {
        Bytes bytes(kBlock, 0);
        if (block / kRun % 3 != 2) {
            bytes = block / kRun % 3 == 0 ? TextLikeBytes(kBlock, block) : RandomBytes(kBlock, block);
        }
        if (block == kApplicationIdentifier / kBlock) {
            const std::string mark = "PSP";
            std::copy(mark.begin(), mark.end(), bytes.begin() + kApplicationIdentifier % kBlock);
        }
        image.Write(bytes);
    }
    image.Commit();
}

/// The time of kBlocks writes of `bytes` bytes each, as the window makes them.
double SecondsOfWrites(const std::string& path, std::size_t bytes) {
    const Bytes block = RandomBytes(bytes, 1);
    COutputFile output;
    output.Open(path, EOutputManner::InPlace);
    return SecondsOf([&] {
        for (std::size_t i = 0; i < kBlocks; ++i) {
            output.Write(block);
        }
    });
}

/// The time of reading, compressing and writing all blocks with one stream.
double SecondsOfOneStream(const std::string& inputPath, const std::string& outputPath) {
    CBlockStream stream({EStreamForm::Raw, 9}, EStreamUse::Reused);
    CInputFile input;
    COutputFile output;
    input.Open(inputPath);
    output.Open(outputPath, EOutputManner::InPlace);
    Bytes block(kBlock);
    Bytes deflated(2 * kBlock);
    return SecondsOf([&] {
        for (std::size_t i = 0; i < kBlocks; ++i) {
            input.ReadAt(static_cast<std::int64_t>(i * kBlock), block);
            const std::size_t produced = stream.Run(block, deflated).produced;
            output.Write(produced < kBlock ? std::span(deflated).first(produced) : std::span(block));
        }
    });
}

/// The best times of several rounds in turn, so that other programs disturb both alike.
void CompareWithOneStream(const std::string& folder) {
    constexpr int kRounds = 3;
    COperation silent;
    SCompressionRequest request =
        DirectConversion(folder + "game.iso", folder + "engine", EOutputManner::InPlace, 0, 9);
    request.strict = false;
    double engine = 1e9;
    double loop = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        engine = std::min(engine, SecondsOf([&] { IsoToCso(request, silent); }));
        loop = std::min(loop, SecondsOfOneStream(folder + "game.iso", folder + "loop"));
    }
    std::printf("iso2cso as in the window %.2f s, loop with one stream %.2f s, ratio %.2f\n", engine, loop,
                engine / loop);
}

struct SConversion {
    const char* name;
    const char* input;
    const char* output;
    int button;
    void (*run)(const SCompressionRequest& request, COperation& operation);
};

void Measure(CTestedProgram& program, const std::string& folder, const SConversion& conversion) {
    const CDrivenDialog dialog = program.Start();
    dialog.Choose(folder + conversion.input);
    const double window = SecondsOf([&] {
        dialog.Press(conversion.button);
        WaitForBox(program, kConversion);
    });
    WaitForBox(program).Close();
    dialog.Press(IDC_EXIT);
    program.WaitForEnd();
    COperation silent;
    SCompressionRequest request =
        DirectConversion(folder + conversion.input, folder + "engine", EOutputManner::InPlace, 0, 9);
    request.strict = false;
    const double engine = SecondsOf([&] { conversion.run(request, silent); });
    CInputFile written;
    written.Open(folder + conversion.output);
    const double writes = SecondsOfWrites(folder + "writes", static_cast<std::size_t>(written.Size()) / kBlocks);
    std::printf(
        "%s: %zu blocks, window %.2f s: panes, bar and messages %.2f s, reading and zlib %.2f s, writes %.2f s\n",
        conversion.name, kBlocks, window, window - engine, engine - writes, writes);
}

}  // namespace
}  // namespace vantrel::test

int main() {
    using namespace vantrel;
    using namespace vantrel::test;
    try {
        const CTestFolder folder;
        WriteImage(folder / "game.iso");
        CTestedProgram program(folder.Path());
        Measure(program, folder.Path(), {"iso2cso", "game.iso", "game.cso", IDC_ISO_TO_CSO, IsoToCso});
        Measure(program, folder.Path(), {"cso2iso", "game.cso", "new-game.iso", IDC_CSO_TO_ISO, CsoToIso});
        CompareWithOneStream(folder.Path());
        return 0;
    } catch (const CDriveFailure& failure) {
        std::printf("%s\n", failure.what());
        return 1;
    }
}
