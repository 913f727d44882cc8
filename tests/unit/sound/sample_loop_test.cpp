// The player's buffers repeat the sound without a gap.
#include "app/sound/sample_loop.h"

#include <gtest/gtest.h>

#include <vector>

namespace vantrel {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i % 251);
    }
    return bytes;
}

TEST(SampleLoop, BufferThatFitsIsCopied) {
    const Bytes samples = Counting(10);
    Bytes buffer(4);
    std::size_t position = 3;
    FillFromLoop(samples, position, buffer);
    EXPECT_EQ(buffer, (Bytes{3, 4, 5, 6}));
    EXPECT_EQ(position, 7u);
}

TEST(SampleLoop, StartsAgainWithinABuffer) {
    const Bytes samples = Counting(10);
    Bytes buffer(6);
    std::size_t position = 7;
    FillFromLoop(samples, position, buffer);
    EXPECT_EQ(buffer, (Bytes{7, 8, 9, 0, 1, 2}));
    EXPECT_EQ(position, 3u);
}

TEST(SampleLoop, StartsAgainAfterABuffer) {
    const Bytes samples = Counting(10);
    Bytes buffer(5);
    std::size_t position = 5;
    FillFromLoop(samples, position, buffer);
    EXPECT_EQ(buffer, (Bytes{5, 6, 7, 8, 9}));
    FillFromLoop(samples, position, buffer);
    EXPECT_EQ(buffer, (Bytes{0, 1, 2, 3, 4}));
}

TEST(SampleLoop, SoundShorterThanTheBufferRepeatsWithinIt) {
    const Bytes samples = Counting(3);
    Bytes buffer(8);
    std::size_t position = 0;
    FillFromLoop(samples, position, buffer);
    EXPECT_EQ(buffer, (Bytes{0, 1, 2, 0, 1, 2, 0, 1}));
    EXPECT_EQ(position, 2u);
}

TEST(SampleLoop, OneSampleFillsTheBuffer) {
    const Bytes samples{77};
    Bytes buffer(kWaveBufferSize);
    std::size_t position = 0;
    FillFromLoop(samples, position, buffer);
    EXPECT_EQ(buffer, Bytes(kWaveBufferSize, 77));
}

TEST(SampleLoop, ManyBuffersFormTheEndlessSound) {
    const Bytes samples = Counting(12345);
    std::size_t position = 0;
    std::size_t played = 0;
    for (int round = 0; round < 20; ++round) {
        Bytes buffer(kWaveBufferSize);
        FillFromLoop(samples, position, buffer);
        for (const std::uint8_t byte : buffer) {
            ASSERT_EQ(byte, samples[played % samples.size()]) << "byte " << played;
            ++played;
        }
    }
}

TEST(SampleLoop, KeepsTheBufferWithoutSamples) {
    Bytes buffer(4, 9);
    std::size_t position = 0;
    FillFromLoop({}, position, buffer);
    EXPECT_EQ(buffer, Bytes(4, 9));
}

TEST(SampleLoop, BuffersHoldWholeSamples) {
    EXPECT_EQ(UsableBufferSize(1), 8000u);
    EXPECT_EQ(UsableBufferSize(2), 8000u);
    EXPECT_EQ(UsableBufferSize(4), 8000u);
    EXPECT_EQ(UsableBufferSize(6), 7998u);
    EXPECT_EQ(UsableBufferSize(8000), 8000u);
    EXPECT_EQ(UsableBufferSize(8001), 0u);
    EXPECT_EQ(UsableBufferSize(0), 0u);
}

}  // namespace
}  // namespace vantrel
