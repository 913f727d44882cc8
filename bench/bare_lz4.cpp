// The minimum cost of compressing and expanding ZSO blocks: a loop of the engine's LZ4 codec and stdio calls on one
// core, without checks or progress. The benchmarks compare the program with it.
//
// usage: bare_lz4 compress IMAGE OUTPUT | expand ZSO OUTPUT
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "bench/bare_files.h"
#include "compress/lz4_decoder.h"
#include "compress/lz4_encoder.h"

namespace {

int Compress(std::FILE* input, std::FILE* output) {
    std::vector<std::uint8_t> block(kBlock);
    std::vector<std::uint8_t> stored(kBlock);
    const auto encoder = std::make_unique<vantrel::CLz4Encoder>();
    while (std::fread(block.data(), 1, kBlock, input) == kBlock) {
        const std::size_t size = encoder->Encode(block, stored);
        std::fwrite(size == 0 ? block.data() : stored.data(), 1, size == 0 ? kBlock : size, output);
    }
    return EXIT_SUCCESS;
}

int Expand(std::FILE* input, std::FILE* output) {
    const std::vector<std::uint32_t> index = ReadIndex(input);
    if (index.empty()) {
        return EXIT_FAILURE;
    }
    std::vector<std::uint8_t> stored(2 * kBlock);
    std::vector<std::uint8_t> block(kBlock);
    for (std::size_t i = 0; i + 1 < index.size(); ++i) {
        const bool isPlain = (index[i] >> 31U) != 0;
        const std::size_t size = (index[i + 1] & 0x7FFFFFFFU) - (index[i] & 0x7FFFFFFFU);
        if (size > stored.size() || std::fread(stored.data(), 1, size, input) != size ||
            (!isPlain && !vantrel::DecodeLz4({stored.data(), size}, block))) {
            return EXIT_FAILURE;
        }
        std::fwrite(isPlain ? stored.data() : block.data(), 1, kBlock, output);
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::string_view way = argc > 1 ? argv[1] : "";
    if (argc != 4 || (way != "compress" && way != "expand")) {
        std::fputs("usage: bare_lz4 compress IMAGE OUTPUT | expand ZSO OUTPUT\n", stderr);
        return 2;
    }
    const File input(std::fopen(argv[2], "rb"));
    const File output(std::fopen(argv[3], "wb"));
    if (!input || !output) {
        std::perror("bare_lz4");
        return EXIT_FAILURE;
    }
    return way == "compress" ? Compress(input.get(), output.get()) : Expand(input.get(), output.get());
}
