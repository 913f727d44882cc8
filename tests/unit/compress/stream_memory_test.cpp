// Memory that zlib streams hand on to their successors.
#include "compress/stream_memory.h"

#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

constexpr int kRawWindow = -15;
constexpr int kMemoryLevel = 8;

void Begin(z_stream& stream) {
    ASSERT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, kRawWindow, kMemoryLevel, Z_DEFAULT_STRATEGY), Z_OK);
}

Bytes Deflated(z_stream stream, Bytes input) {
    Begin(stream);
    Bytes output(2 * input.size());
    stream.next_in = input.data();
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    output.resize(output.size() - stream.avail_out);
    EXPECT_EQ(deflateEnd(&stream), Z_OK);
    return output;
}

TEST(StreamMemory, TheNextStreamGetsTheSameMemory) {
    CStreamMemory memory;
    z_stream first = memory.NewStream();
    Begin(first);
    const void* const state = first.state;
    deflateEnd(&first);
    z_stream second = memory.NewStream();
    Begin(second);
    EXPECT_EQ(second.state, state);
    deflateEnd(&second);
}

TEST(StreamMemory, StreamsAtTheSameTimeShareNothing) {
    CStreamMemory memory;
    z_stream first = memory.NewStream();
    z_stream second = memory.NewStream();
    Begin(first);
    Begin(second);
    EXPECT_NE(first.state, second.state);
    deflateEnd(&first);
    deflateEnd(&second);
}

TEST(StreamMemory, StreamsCompressAsWithTheAllocatorOfZlib) {
    CStreamMemory memory;
    for (std::uint64_t i = 0; i < 40; ++i) {
        const Bytes block = i % 2 == 0 ? test::TextLikeBytes(2048, i) : test::RandomBytes(2048, i);
        EXPECT_EQ(Deflated(memory.NewStream(), block), Deflated(z_stream(), block));
    }
}

}  // namespace
}  // namespace vantrel
