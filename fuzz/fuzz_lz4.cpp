// LZ4 blocks: the decoder with outputs of every size, and what the encoder makes of the same bytes.
#include <algorithm>
#include <memory>
#include <vector>

#include "compress/lz4_decoder.h"
#include "compress/lz4_encoder.h"
#include "compress/lz4_format.h"
#include "fuzz/expect.h"

namespace vantrel::fuzz {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLargestOutput = 65536;
constexpr std::size_t kLongInput = 20000;
/// Every output size below this one is tried.
constexpr std::size_t kOutputSizes = 300;

/// Decodes into memory of exactly the given size, so that the sanitizers see every access outside of it.
std::optional<Bytes> Decoded(std::span<const std::uint8_t> block, std::size_t size) {
    Bytes out(size);
    const std::optional<std::size_t> written = DecodeLz4(block, out);
    if (!written) {
        return std::nullopt;
    }
    Expect(*written <= size, "the output has room for what was written");
    out.resize(*written);
    return out;
}

void Decode(std::span<const std::uint8_t> input) {
    const Bytes block(input.begin(), input.end());
    const std::optional<Bytes> whole = Decoded(block, kLargestOutput);
    if (whole) {
        const std::optional<Bytes> exact = Decoded(block, whole->size());
        Expect(exact == whole, "a block fits an output of its size");
    }
    for (std::size_t size = 0; size < kOutputSizes; ++size) {
        const std::optional<Bytes> part = Decoded(block, size);
        if (part && whole) {
            Expect(
                part->size() == std::min(size, whole->size()) && std::equal(part->begin(), part->end(), whole->begin()),
                "a smaller output holds the beginning");
        }
    }
}

Bytes Encoded(const Bytes& in, std::size_t room) {
    static const auto encoder = std::make_unique<CLz4Encoder>();
    Bytes out(room);
    out.resize(encoder->Encode(in, out));
    return out;
}

Bytes Encode(const Bytes& in) {
    const Bytes block = Encoded(in, in.size() + in.size() / kLz4LengthStep + 2);
    Expect(!block.empty(), "literals alone always fit");
    Expect(Decoded(block, in.size()) == in, "the block expands to the input");
    return block;
}

void EncodeInEveryWay(const Bytes& in) {
    const Bytes block = Encode(in);
    Expect(Encoded(in, block.size()) == block, "the same input gives the same block");
    Expect(Encoded(in, block.size() - 1).empty(), "a block that does not fit is refused");
}

/// Repeats the input, with runs between, so that there are long matches and more than one segment.
Bytes Repeated(std::span<const std::uint8_t> input) {
    Bytes bytes;
    for (std::size_t i = 0; i < input.size() && bytes.size() < kLongInput; i += 16) {
        bytes.insert(bytes.end(), input.begin() + static_cast<std::ptrdiff_t>(i), input.end());
        bytes.insert(bytes.end(), std::size_t{input[i]} * input[i] % 3000, input[i]);
    }
    return bytes;
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    const std::span<const std::uint8_t> input(data, size);
    Decode(input);
    EncodeInEveryWay(Bytes(input.begin(), input.end()));
    Encode(Repeated(input));
    return 0;
}
