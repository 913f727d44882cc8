// The least that compressing and expanding DAX frames can cost: a loop over zlib's one-call routines and stdio, without
// names, checks or progress. The programs are measured against it.
//
// usage: bare_dax compress LEVEL IMAGE OUTPUT
//        bare_dax uncompress DAX OUTPUT
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr std::size_t kFrame = 8192;
constexpr std::size_t kRoom = 9216;
constexpr long kSizeOffset = 4;
constexpr long kTables = 32;

struct SFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, SFileCloser>;

int Compress(int level, std::FILE* input, std::FILE* output) {
    std::vector<unsigned char> frame(kFrame);
    std::vector<unsigned char> stored(kRoom);
    std::size_t count = 0;
    while ((count = std::fread(frame.data(), 1, kFrame, input)) > 0) {
        uLongf size = kRoom;
        compress2(stored.data(), &size, frame.data(), static_cast<uLong>(count), level);
        std::fwrite(stored.data(), 1, size, output);
    }
    return EXIT_SUCCESS;
}

int Uncompress(std::FILE* input, std::FILE* output) {
    std::uint32_t total = 0;
    std::fseek(input, kSizeOffset, SEEK_SET);
    if (std::fread(&total, 1, sizeof total, input) != sizeof total) {
        return EXIT_FAILURE;
    }
    const std::size_t frames = (total + kFrame - 1) / kFrame;
    std::vector<std::uint16_t> lengths(frames);
    std::fseek(input, kTables + static_cast<long>(frames * sizeof(std::uint32_t)), SEEK_SET);
    if (std::fread(lengths.data(), sizeof(std::uint16_t), frames, input) != frames) {
        return EXIT_FAILURE;
    }
    std::vector<unsigned char> stored(kRoom);
    std::vector<unsigned char> frame(kFrame);
    for (const std::uint16_t length : lengths) {
        if (std::fread(stored.data(), 1, length, input) != length) {
            return EXIT_FAILURE;
        }
        uLongf size = kFrame;
        uncompress(frame.data(), &size, stored.data(), length);
        std::fwrite(frame.data(), 1, size, output);
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
    const bool compressing = argc == 5 && std::strcmp(argv[1], "compress") == 0;
    if (!compressing && !(argc == 4 && std::strcmp(argv[1], "uncompress") == 0)) {
        std::fputs("usage: bare_dax compress LEVEL IMAGE OUTPUT | uncompress DAX OUTPUT\n", stderr);
        return 2;
    }
    const File input(std::fopen(argv[argc - 2], "rb"));
    const File output(std::fopen(argv[argc - 1], "wb"));
    if (!input || !output) {
        std::perror("bare_dax");
        return EXIT_FAILURE;
    }
    return compressing ? Compress(std::atoi(argv[2]), input.get(), output.get())
                       : Uncompress(input.get(), output.get());
}
