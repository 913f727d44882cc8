// The minimum cost of compressing and expanding DAX frames: a loop of zlib and stdio calls without checks or progress,
// with zlib's one-call routines or with one stream that is reset. The benchmarks compare the programs with it.
//
// usage: bare_dax compress|compress-reused LEVEL IMAGE OUTPUT
//        bare_dax uncompress|uncompress-reused DAX OUTPUT
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "bench/bare_files.h"

namespace {

constexpr std::size_t kFrame = 8192;
constexpr std::size_t kRoom = 9216;
constexpr long kSizeOffset = 4;
constexpr long kTables = 32;

using Bytes = std::vector<unsigned char>;

/// Calls `step`, which is deflate or inflate, for all of the input. Returns the number of bytes in the output.
template <typename Step>
std::size_t Run(z_stream& stream, Bytes& input, std::size_t size, Bytes& output, Step step) {
    stream.next_in = input.data();
    stream.avail_in = static_cast<uInt>(size);
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    step(&stream, Z_FINISH);
    return output.size() - stream.avail_out;
}

int Compress(int level, bool reused, std::FILE* input, std::FILE* output) {
    Bytes frame(kFrame);
    Bytes stored(kRoom);
    z_stream stream = {};
    deflateInit(&stream, level);
    std::size_t count = 0;
    while ((count = std::fread(frame.data(), 1, kFrame, input)) > 0) {
        uLongf size = kRoom;
        if (reused) {
            deflateReset(&stream);
            size = Run(stream, frame, count, stored, deflate);
        } else {
            compress2(stored.data(), &size, frame.data(), static_cast<uLong>(count), level);
        }
        std::fwrite(stored.data(), 1, size, output);
    }
    deflateEnd(&stream);
    return EXIT_SUCCESS;
}

int Uncompress(bool reused, std::FILE* input, std::FILE* output) {
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
    Bytes stored(kRoom);
    Bytes frame(kFrame);
    z_stream stream = {};
    inflateInit(&stream);
    for (const std::uint16_t length : lengths) {
        if (std::fread(stored.data(), 1, length, input) != length) {
            return EXIT_FAILURE;
        }
        uLongf size = kFrame;
        if (reused) {
            inflateReset(&stream);
            size = Run(stream, stored, length, frame, inflate);
        } else {
            uncompress(frame.data(), &size, stored.data(), length);
        }
        std::fwrite(frame.data(), 1, size, output);
    }
    inflateEnd(&stream);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::string_view way = argc > 1 ? argv[1] : "";
    const bool compressing = argc == 5 && (way == "compress" || way == "compress-reused");
    if (!compressing && !(argc == 4 && (way == "uncompress" || way == "uncompress-reused"))) {
        std::fputs(
            "usage: bare_dax compress|compress-reused LEVEL IMAGE OUTPUT | uncompress|uncompress-reused DAX OUTPUT\n",
            stderr);
        return 2;
    }
    const bool reused = way.ends_with("-reused");
    const File input(std::fopen(argv[argc - 2], "rb"));
    const File output(std::fopen(argv[argc - 1], "wb"));
    if (!input || !output) {
        std::perror("bare_dax");
        return EXIT_FAILURE;
    }
    return compressing ? Compress(std::atoi(argv[2]), reused, input.get(), output.get())
                       : Uncompress(reused, input.get(), output.get());
}
