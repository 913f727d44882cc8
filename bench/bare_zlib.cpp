// The least that compressing and expanding CSO blocks can cost: a loop over zlib and stdio with one fresh stream per
// block, without names, checks or progress. The programs are measured against it.
//
// usage: bare_zlib deflate LEVEL IMAGE OUTPUT
//        bare_zlib inflate CSO OUTPUT
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kBlock = 2048;
constexpr int kRawWindow = -15;

struct SFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, SFileCloser>;

int Deflate(int level, std::FILE* input, std::FILE* output) {
    std::vector<unsigned char> block(kBlock);
    std::vector<unsigned char> stored(2 * kBlock);
    while (std::fread(block.data(), 1, kBlock, input) == kBlock) {
        z_stream stream = {};
        deflateInit2(&stream, level, Z_DEFLATED, kRawWindow, 8, Z_DEFAULT_STRATEGY);
        stream.next_in = block.data();
        stream.avail_in = kBlock;
        stream.next_out = stored.data();
        stream.avail_out = static_cast<uInt>(stored.size());
        deflate(&stream, Z_FINISH);
        const std::size_t size = stored.size() - stream.avail_out;
        std::fwrite(size >= kBlock ? block.data() : stored.data(), 1, size >= kBlock ? kBlock : size, output);
        deflateEnd(&stream);
    }
    return EXIT_SUCCESS;
}

int Inflate(std::FILE* input, std::FILE* output) {
    std::uint64_t total = 0;
    std::fseek(input, 8, SEEK_SET);
    if (std::fread(&total, 1, sizeof total, input) != sizeof total) {
        return EXIT_FAILURE;
    }
    std::vector<std::uint32_t> index(total / kBlock + 1);
    std::fseek(input, 24, SEEK_SET);
    if (std::fread(index.data(), sizeof(std::uint32_t), index.size(), input) != index.size()) {
        return EXIT_FAILURE;
    }
    std::vector<unsigned char> stored(2 * kBlock);
    std::vector<unsigned char> block(kBlock);
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
        z_stream stream = {};
        inflateInit2(&stream, kRawWindow);
        stream.next_in = stored.data();
        stream.avail_in = static_cast<uInt>(size);
        stream.next_out = block.data();
        stream.avail_out = kBlock;
        inflate(&stream, Z_FINISH);
        inflateEnd(&stream);
        std::fwrite(block.data(), 1, kBlock, output);
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
    const bool deflating = argc == 5 && std::strcmp(argv[1], "deflate") == 0;
    if (!deflating && !(argc == 4 && std::strcmp(argv[1], "inflate") == 0)) {
        std::fputs("usage: bare_zlib deflate LEVEL IMAGE OUTPUT | inflate CSO OUTPUT\n", stderr);
        return 2;
    }
    const File input(std::fopen(argv[argc - 2], "rb"));
    const File output(std::fopen(argv[argc - 1], "wb"));
    if (!input || !output) {
        std::perror("bare_zlib");
        return EXIT_FAILURE;
    }
    return deflating ? Deflate(std::atoi(argv[2]), input.get(), output.get()) : Inflate(input.get(), output.get());
}
