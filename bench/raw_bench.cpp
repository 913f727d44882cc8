// The speed of encoding raw sectors: EDC, parity, and whole sectors, in bytes of user data per second.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "raw/edc.h"
#include "raw/parity.h"
#include "raw/sector.h"

namespace vantrel {
namespace {

constexpr std::size_t kSectors = 64;

std::vector<std::uint8_t> RandomData(std::size_t count) {
    std::mt19937 random(1);
    std::vector<std::uint8_t> bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

void CountUserData(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kSectors * kUserDataSize));
}

void Edc(benchmark::State& state) {
    const std::vector<std::uint8_t> data = RandomData(kSectors * kUserDataSize);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kSectors; ++i) {
            benchmark::DoNotOptimize(EdcOf(std::span(data).subspan(i * kUserDataSize, kUserDataSize)));
        }
    }
    CountUserData(state);
}
BENCHMARK(Edc);

void Parity(benchmark::State& state) {
    std::vector<std::uint8_t> data = RandomData(kSectors * kParityAreaSize);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kSectors; ++i) {
            PutParity(std::span<std::uint8_t, kParityAreaSize>(data.data() + i * kParityAreaSize, kParityAreaSize));
        }
        benchmark::ClobberMemory();
    }
    CountUserData(state);
}
BENCHMARK(Parity);

void WholeSector(benchmark::State& state) {
    const std::vector<std::uint8_t> data = RandomData(kSectors * kUserDataSize);
    std::vector<std::uint8_t> raw(kSectors * kRawSectorSize);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kSectors; ++i) {
            EncodeSector(ESectorMode::Mode2Form1, static_cast<std::uint32_t>(i),
                         std::span<const std::uint8_t, kUserDataSize>(data.data() + i * kUserDataSize, kUserDataSize),
                         std::span<std::uint8_t, kRawSectorSize>(raw.data() + i * kRawSectorSize, kRawSectorSize));
        }
        benchmark::ClobberMemory();
    }
    CountUserData(state);
}
BENCHMARK(WholeSector);

}  // namespace
}  // namespace vantrel

BENCHMARK_MAIN();
