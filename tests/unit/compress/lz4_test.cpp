// LZ4 blocks: the encoder and the decoder by themselves.
#include <gmock/gmock.h>

#include <algorithm>
#include <memory>

#include "compress/lz4_decoder.h"
#include "compress/lz4_encoder.h"
#include "tests/unit/compress/lz4_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::SLz4Sequence;

/// The largest block of `size` bytes.
std::size_t RoomFor(std::size_t size) {
    return size + size / 255 + 2;
}

Bytes Encoded(CLz4Encoder& encoder, std::span<const std::uint8_t> in) {
    Bytes out(RoomFor(in.size()));
    out.resize(encoder.Encode(in, out));
    return out;
}

Bytes Encoded(const Bytes& in) {
    return Encoded(*std::make_unique<CLz4Encoder>(), in);
}

std::optional<Bytes> Decoded(const Bytes& block, std::size_t room) {
    Bytes out(room, 0xA5);
    const std::optional<std::size_t> written = DecodeLz4(block, out);
    if (!written) {
        return std::nullopt;
    }
    out.resize(*written);
    return out;
}

Bytes Text(std::string_view text) {
    return {text.begin(), text.end()};
}

Bytes Joined(const std::vector<Bytes>& parts) {
    Bytes joined;
    for (const Bytes& part : parts) {
        joined.insert(joined.end(), part.begin(), part.end());
    }
    return joined;
}

// A hand-made block: "abcd" as literals, a match of 12 bytes from 4 back, "vwxyz" as literals.
const Bytes kBlock = Joined({{0x48}, Text("abcd"), {4, 0}, {0x50}, Text("vwxyz")});
const Bytes kContent = Text("abcdabcdabcdabcdvwxyz");

TEST(Lz4Decoder, CopiesLiteralsAndMatches) {
    EXPECT_EQ(Decoded(kBlock, 21), kContent);
}

TEST(Lz4Decoder, ReturnsTheLengthOfABlockThatDoesNotFillTheOutput) {
    EXPECT_EQ(Decoded(kBlock, 100), kContent);
    EXPECT_EQ(Decoded({0}, 100), Bytes());
}

TEST(Lz4Decoder, IgnoresWhatFollowsAFullOutput) {
    EXPECT_EQ(Decoded(Joined({kBlock, Bytes(50)}), 21), kContent);
    EXPECT_EQ(Decoded(Joined({kBlock, Bytes(50, 0xFF)}), 21), kContent);
    EXPECT_EQ(Decoded(kBlock, 16), Text("abcdabcdabcdabcd"));
    EXPECT_EQ(Decoded(kBlock, 4), Text("abcd"));
    EXPECT_EQ(Decoded({}, 0), Bytes());
}

TEST(Lz4Decoder, RepeatsMatchesThatOverlapTheirOutput) {
    for (std::size_t offset = 1; offset <= 40; ++offset) {
        Bytes wanted = test::RandomBytes(40, offset);
        const Bytes block =
            Joined({{0xFF, 25}, wanted, {static_cast<std::uint8_t>(offset), 0}, {100}, {0x10}, Text("z")});
        for (std::size_t i = 0; i < 119; ++i) {
            wanted.push_back(wanted[wanted.size() - offset]);
        }
        wanted.push_back('z');
        EXPECT_EQ(Decoded(block, 160), wanted) << offset;
        EXPECT_EQ(Decoded(block, 300), wanted) << offset;
    }
}

TEST(Lz4Decoder, ContinuesLengthsUntilAByteBelow255) {
    const Bytes literals = test::RandomBytes(15 + 255 + 255, 1);
    EXPECT_EQ(Decoded(Joined({{0xF0, 255, 255, 0}, literals}), 1000), literals);
    const Bytes block = Joined({{0x1F}, Text("a"), {1, 0}, {255, 0}, {0x10}, Text("b")});
    EXPECT_EQ(Decoded(block, 1000), Joined({Bytes(1 + 4 + 15 + 255, 'a'), Text("b")}));
}

TEST(Lz4Decoder, RefusesABlockThatEndsWithinASequence) {
    for (std::size_t size = 0; size < kBlock.size(); ++size) {
        const bool isEndOfLiterals = size == 5;
        EXPECT_EQ(Decoded(Bytes(kBlock.begin(), kBlock.begin() + static_cast<std::ptrdiff_t>(size)), 21).has_value(),
                  isEndOfLiterals)
            << size;
    }
    EXPECT_EQ(Decoded({0xF0}, 100), std::nullopt);
    EXPECT_EQ(Decoded({0xF0, 255}, 1000), std::nullopt);
    EXPECT_EQ(Decoded(Joined({{0x1F}, Text("a"), {1, 0}}), 100), std::nullopt);
}

TEST(Lz4Decoder, RefusesOffsetsBeforeTheBeginningAndZero) {
    EXPECT_EQ(Decoded(Joined({{0x40}, Text("abcd"), {5, 0}, {0x50}, Text("vwxyz")}), 100), std::nullopt);
    EXPECT_EQ(Decoded(Joined({{0x40}, Text("abcd"), {0, 0}, {0x50}, Text("vwxyz")}), 100), std::nullopt);
    EXPECT_EQ(Decoded(Joined({{0x40}, Text("abcd"), {4, 1}, {0x50}, Text("vwxyz")}), 100), std::nullopt);
}

TEST(Lz4Decoder, RefusesSequencesBeyondTheOutput) {
    for (const std::size_t room : {1, 3, 5, 15, 17, 20}) {
        EXPECT_EQ(Decoded(kBlock, room), std::nullopt) << room;
    }
    const Bytes manySteps = Joined({{0xF0}, Bytes(100000, 255)});
    EXPECT_EQ(Decoded(manySteps, 1000), std::nullopt);
}

TEST(Lz4Decoder, WritesOnlyWhatItReturns) {
    Bytes out(100, 0xA5);
    ASSERT_EQ(DecodeLz4(kBlock, std::span(out).first(21)), 21U);
    EXPECT_TRUE(std::all_of(out.begin() + 21, out.end(), [](std::uint8_t byte) { return byte == 0xA5; }));
}

/// What every block must be like, for any decoder.
void CheckBlock(const Bytes& in, const Bytes& block, const char* name) {
    ASSERT_FALSE(block.empty()) << name;
    ASSERT_EQ(Decoded(block, in.size()), in) << name;
    const std::vector<SLz4Sequence> sequences = test::SequencesOf(block);
    for (const SLz4Sequence& sequence : sequences) {
        if (sequence.length == 0) {
            EXPECT_EQ(&sequence, &sequences.back()) << name;
            EXPECT_TRUE(sequence.literals >= 5 || sequences.size() == 1) << name;
        } else {
            EXPECT_TRUE(sequence.offset >= 1 && sequence.offset <= std::min<std::size_t>(sequence.position, 65535))
                << name;
            EXPECT_LE(sequence.position + 12, in.size()) << name;
        }
    }
    EXPECT_EQ(sequences.back().position, in.size()) << name;
}

TEST(Lz4Encoder, EveryBlockExpandsToItsContentAndEndsAsDecodersExpect) {
    const auto encoder = std::make_unique<CLz4Encoder>();
    for (const test::SLz4Data& data : test::Lz4Corpus()) {
        const Bytes content = data.make();
        for (const std::size_t size : {2048, 16384, 200000}) {
            for (std::size_t at = 0; at < std::max<std::size_t>(size, 32768); at += size) {
                const auto in = std::span(content).subspan(at, size);
                CheckBlock(Bytes(in.begin(), in.end()), Encoded(*encoder, in), data.name);
            }
        }
    }
}

TEST(Lz4Encoder, RunsLongerThanTheWindow) {
    const Bytes run(70'000, 'a');
    const Bytes in = Joined({test::RandomBytes(1000, 1), run, test::RandomBytes(1000, 2), run, Text("b")});
    CheckBlock(in, Encoded(in), "runs");
}

TEST(Lz4Encoder, AnEarlierRunMayBeginTheBlock) {
    for (const std::size_t run : {5, 10, 40}) {
        const Bytes in = Joined({Bytes(run, 'a'), test::RandomBytes(30, 1), Bytes(run, 'a'), test::RandomBytes(30, 2)});
        const auto sequences = test::SequencesOf(Encoded(in));
        const auto again = std::ranges::find_if(sequences, [](const auto& sequence) { return sequence.offset > 1; });
        ASSERT_NE(again, sequences.end()) << run;
        EXPECT_EQ(again->offset, run + 30);
        EXPECT_EQ(again->length, run);
    }
}

TEST(Lz4Encoder, SmallBlocksOfEveryLength) {
    for (std::size_t size = 0; size < 300; ++size) {
        CheckBlock(Bytes(size), Encoded(Bytes(size)), "zeros");
        CheckBlock(test::RandomBytes(size, size), Encoded(test::RandomBytes(size, size)), "random");
        CheckBlock(test::TextLikeBytes(size, size), Encoded(test::TextLikeBytes(size, size)), "text");
    }
}

TEST(Lz4Encoder, KnownBlocks) {
    EXPECT_EQ(Encoded(Bytes()), Bytes{0});
    EXPECT_EQ(Encoded(Text("abc")), Joined({{0x30}, Text("abc")}));
    EXPECT_EQ(Encoded(kContent), kBlock);
    // 12 zeros have no match: it would begin too late.
    EXPECT_EQ(Encoded(Bytes(12)), Joined({{0xC0}, Bytes(12)}));
    EXPECT_EQ(Encoded(Bytes(13)), Joined({{0x13, 0}, {1, 0}, {0x50}, Bytes(5)}));
}

TEST(Lz4Encoder, ReachesBackOverTheWholeWindow) {
    const Bytes start = test::RandomBytes(1000, 1);
    for (const std::size_t distance : {65535, 65536}) {
        Bytes in = start;
        in.resize(distance);
        in.insert(in.end(), start.begin(), start.end());
        const std::size_t size = Encoded(in).size();
        EXPECT_EQ(size < 1500, distance == 65535) << size;
    }
}

TEST(Lz4Encoder, OneMatchCoversManySegments) {
    EXPECT_EQ(test::SequencesOf(Encoded(Bytes(1U << 20U))).size(), 2U);
}

TEST(Lz4Encoder, RefusesBlocksThatDoNotFit) {
    const auto encoder = std::make_unique<CLz4Encoder>();
    for (const Bytes& in : {Bytes(), Bytes(500), test::TextLikeBytes(500, 1), test::RandomBytes(500, 1), kContent}) {
        const Bytes block = Encoded(in);
        for (std::size_t room = 0; room < block.size(); ++room) {
            Bytes out(room);
            EXPECT_EQ(encoder->Encode(in, out), 0U) << room;
        }
        Bytes out(block.size() + 10, 0xA5);
        EXPECT_EQ(encoder->Encode(in, std::span(out).first(block.size())), block.size());
        EXPECT_TRUE(std::equal(block.begin(), block.end(), out.begin()));
        EXPECT_TRUE(std::all_of(out.end() - 10, out.end(), [](std::uint8_t byte) { return byte == 0xA5; }));
    }
}

TEST(Lz4Encoder, EarlierBlocksDoNotMatter) {
    const auto encoder = std::make_unique<CLz4Encoder>();
    for (const std::size_t size : {300, 2048, 40000, 5000, 100000, 2048}) {
        const Bytes in = test::TextLikeBytes(size, size);
        EXPECT_EQ(Encoded(*encoder, in), Encoded(in)) << size;
    }
}

}  // namespace
}  // namespace vantrel
