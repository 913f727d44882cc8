// The minimum cost of compressing and expanding CSO blocks: a loop of zlib and stdio calls without checks or progress,
// with a new stream for each block or with one stream that is reset. The benchmarks compare the programs with it.
//
// usage: bare_zlib deflate|deflate-reused LEVEL IMAGE OUTPUT
//        bare_zlib inflate|inflate-reused CSO OUTPUT
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "bench/bare_files.h"

namespace {

constexpr int kRawWindow = -15;

int Deflate(int level, bool reused, std::FILE* input, std::FILE* output) {
    std::vector<unsigned char> block(kBlock);
    std::vector<unsigned char> stored(2 * kBlock);
    z_stream stream = {};
    bool open = false;
    while (std::fread(block.data(), 1, kBlock, input) == kBlock) {
        if (!open) {
            stream = {};
            deflateInit2(&stream, level, Z_DEFLATED, kRawWindow, 8, Z_DEFAULT_STRATEGY);
        } else {
            deflateReset(&stream);
        }
        stream.next_in = block.data();
        stream.avail_in = kBlock;
        stream.next_out = stored.data();
        stream.avail_out = static_cast<uInt>(stored.size());
        deflate(&stream, Z_FINISH);
        const std::size_t size = stored.size() - stream.avail_out;
        std::fwrite(size >= kBlock ? block.data() : stored.data(), 1, size >= kBlock ? kBlock : size, output);
        open = reused;
        if (!open) {
            deflateEnd(&stream);
        }
    }
    if (open) {
        deflateEnd(&stream);
    }
    return EXIT_SUCCESS;
}

int Inflate(bool reused, std::FILE* input, std::FILE* output) {
    const std::vector<std::uint32_t> index = ReadIndex(input);
    if (index.empty()) {
        return EXIT_FAILURE;
    }
    std::vector<unsigned char> stored(2 * kBlock);
    std::vector<unsigned char> block(kBlock);
    z_stream stream = {};
    bool open = false;
    for (std::size_t i = 0; i + 1 < index.size(); ++i) {
        const bool plain = (index[i] >> 31U) != 0;
        const std::size_t size = plain ? kBlock : (index[i + 1] & 0x7FFFFFFFU) - index[i];
        if (std::fread(stored.data(), 1, size, input) != size) {
            return EXIT_FAILURE;
        }
        if (plain) {
            std::fwrite(stored.data(), 1, kBlock, output);
            continue;
        }
        if (!open) {
            stream = {};
            inflateInit2(&stream, kRawWindow);
        } else {
            inflateReset(&stream);
        }
        stream.next_in = stored.data();
        stream.avail_in = static_cast<uInt>(size);
        stream.next_out = block.data();
        stream.avail_out = kBlock;
        inflate(&stream, Z_FINISH);
        open = reused;
        if (!open) {
            inflateEnd(&stream);
        }
        std::fwrite(block.data(), 1, kBlock, output);
    }
    if (open) {
        inflateEnd(&stream);
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::string_view way = argc > 1 ? argv[1] : "";
    const bool deflating = argc == 5 && (way == "deflate" || way == "deflate-reused");
    if (!deflating && !(argc == 4 && (way == "inflate" || way == "inflate-reused"))) {
        std::fputs("usage: bare_zlib deflate|deflate-reused LEVEL IMAGE OUTPUT | inflate|inflate-reused CSO OUTPUT\n",
                   stderr);
        return 2;
    }
    const bool reused = way.ends_with("-reused");
    const File input(std::fopen(argv[argc - 2], "rb"));
    const File output(std::fopen(argv[argc - 1], "wb"));
    if (!input || !output) {
        std::perror("bare_zlib");
        return EXIT_FAILURE;
    }
    return deflating ? Deflate(std::atoi(argv[2]), reused, input.get(), output.get())
                     : Inflate(reused, input.get(), output.get());
}
