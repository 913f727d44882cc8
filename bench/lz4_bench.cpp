// The speed of encoding and decoding LZ4 blocks of several sizes, in bytes of expanded data per second.
#include <benchmark/benchmark.h>

#include <memory>

#include "compress/lz4_decoder.h"
#include "compress/lz4_encoder.h"
#include "tests/support/test_folder.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kSize = 3U << 20U;

/// One third each of text, noise and zeros, in runs of 24 KiB.
Bytes MixedBytes() {
    constexpr std::size_t kRun = 24576;
    Bytes bytes;
    for (std::size_t i = 0; bytes.size() < kSize; ++i) {
        const Bytes run = i % 3 == 0 ? TextLikeBytes(kRun, i) : i % 3 == 1 ? RandomBytes(kRun, i) : Bytes(kRun);
        bytes.insert(bytes.end(), run.begin(), run.end());
    }
    return bytes;
}

std::vector<Bytes> EncodedBlocks(const Bytes& bytes, std::size_t size) {
    const auto encoder = std::make_unique<CLz4Encoder>();
    std::vector<Bytes> blocks;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        Bytes& block = blocks.emplace_back(size + size / 100 + 16);
        block.resize(encoder->Encode(std::span(bytes).subspan(at, size), block));
    }
    return blocks;
}

void Report(benchmark::State& state, const std::vector<Bytes>& blocks) {
    std::size_t stored = 0;
    for (const Bytes& block : blocks) {
        stored += block.size();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kSize));
    state.counters["ratio"] = static_cast<double>(stored) / static_cast<double>(kSize);
}

void Encode(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const Bytes bytes = MixedBytes();
    for (auto _ : state) {
        benchmark::DoNotOptimize(EncodedBlocks(bytes, size));
    }
    Report(state, EncodedBlocks(bytes, size));
}
BENCHMARK(Encode)->Arg(2048)->Arg(16384)->Arg(1 << 20)->Unit(benchmark::kMillisecond);

void Decode(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const std::vector<Bytes> blocks = EncodedBlocks(MixedBytes(), size);
    Bytes out(size);
    for (auto _ : state) {
        for (const Bytes& block : blocks) {
            benchmark::DoNotOptimize(DecodeLz4(block, out));
        }
    }
    Report(state, blocks);
}
BENCHMARK(Decode)->Arg(2048)->Arg(16384)->Arg(1 << 20)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrel::test

BENCHMARK_MAIN();
