// What the bare loops of the benchmarks share: files of stdio, and the index of a CSO or ZSO file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

constexpr std::size_t kBlock = 2048;

struct SFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, SFileCloser>;

/// Reads the index and stops at the first block. Empty if the file ends before.
inline std::vector<std::uint32_t> ReadIndex(std::FILE* input) {
    std::uint64_t total = 0;
    std::fseek(input, 8, SEEK_SET);
    if (std::fread(&total, 1, sizeof total, input) != sizeof total) {
        return {};
    }
    std::vector<std::uint32_t> index(total / kBlock + 1);
    std::fseek(input, 24, SEEK_SET);
    const bool complete = std::fread(index.data(), sizeof(std::uint32_t), index.size(), input) == index.size();
    return complete ? index : std::vector<std::uint32_t>();
}
