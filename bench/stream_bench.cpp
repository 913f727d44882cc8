// The cost of a new zlib stream for every block, compared with one stream that is reset: blocks of 2048 bytes in
// memory, both ways in turn, the best of several rounds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "compress/block_stream.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kBlock = 2048;
constexpr std::size_t kBlocks = 8192;
constexpr int kRounds = 7;

/// One third each of text, noise and zeros, in runs of several blocks.
std::vector<Bytes> MakeBlocks() {
    constexpr std::size_t kRun = 12;
    std::vector<Bytes> blocks;
    for (std::size_t i = 0; i < kBlocks; ++i) {
        const std::size_t kind = i / kRun % 3;
        blocks.push_back(kind == 0 ? TextLikeBytes(kBlock, i) : kind == 1 ? RandomBytes(kBlock, i) : Bytes(kBlock, 0));
    }
    return blocks;
}

double SecondsOf(const std::vector<Bytes>& blocks, const SStreamSettings& settings, EStreamUse use) {
    CBlockStream stream(settings, use);
    Bytes output(2 * kBlock);
    const auto start = std::chrono::steady_clock::now();
    for (const Bytes& block : blocks) {
        stream.Run(block, output);
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void Measure(const char* name, const std::vector<Bytes>& blocks, const SStreamSettings& settings) {
    double fresh = 1e9;
    double reused = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        fresh = std::min(fresh, SecondsOf(blocks, settings, EStreamUse::Fresh));
        reused = std::min(reused, SecondsOf(blocks, settings, EStreamUse::Reused));
    }
    std::printf("%s: new streams %.3f s, one stream %.3f s, ratio %.2f\n", name, fresh, reused, fresh / reused);
}

std::vector<Bytes> Deflated(const std::vector<Bytes>& blocks, const SStreamSettings& settings) {
    CBlockStream stream(settings, EStreamUse::Reused);
    std::vector<Bytes> deflated;
    for (const Bytes& block : blocks) {
        Bytes output(2 * kBlock);
        output.resize(stream.Run(block, output).produced);
        deflated.push_back(output);
    }
    return deflated;
}

}  // namespace
}  // namespace vantrel::test

int main() {
    using namespace vantrel;
    using namespace vantrel::test;
    const std::vector<Bytes> blocks = MakeBlocks();
    for (const int level : {1, 6, 9}) {
        std::printf("level %d ", level);
        Measure("deflate", blocks, {EStreamForm::Raw, level});
    }
    Measure("inflate", Deflated(blocks, {EStreamForm::Raw, 9}), {EStreamForm::Raw, {}});
}
