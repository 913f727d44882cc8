// A zlib stream that is reset from block to block: the same bytes and the same faults as with a new stream each.
#include "compress/block_stream.h"

#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

constexpr std::size_t kRoom = 9216;

struct SResult {
    Bytes output;
    SStreamOutcome outcome;
};

template <typename Direction>
SResult Through(CBlockStream<Direction>& stream, const Bytes& input, std::size_t room) {
    SResult result;
    result.output.resize(room);
    result.outcome = stream.Run(input, result.output);
    result.output.resize(result.outcome.produced);
    return result;
}

void ExpectSame(const SResult& kept, const SResult& fresh) {
    EXPECT_EQ(kept.output, fresh.output);
    EXPECT_EQ(kept.outcome.failed, fresh.outcome.failed);
    EXPECT_EQ(kept.outcome.failedStep, fresh.outcome.failedStep);
    EXPECT_EQ(kept.outcome.result, fresh.outcome.result);
    EXPECT_STREQ(kept.outcome.message, fresh.outcome.message);
}

/// Blocks of all kinds and lengths, one after the other.
std::vector<Bytes> Blocks() {
    std::vector<Bytes> blocks;
    for (std::uint64_t i = 0; i < 60; ++i) {
        const std::size_t length = i % 5 == 4 ? i * 37 + 1 : i % 2 == 0 ? 2048 : 8192;
        blocks.push_back(i % 3 == 0   ? test::RandomBytes(length, i)
                         : i % 3 == 1 ? test::TextLikeBytes(length, i)
                                      : Bytes(length, static_cast<std::uint8_t>(i)));
    }
    return blocks;
}

TEST(BlockStream, AResetStreamDeflatesToTheSameBytes) {
    for (const EStreamForm form : {EStreamForm::Raw, EStreamForm::Zlib}) {
        for (int level = 1; level <= 9; ++level) {
            CBlockDeflater kept({form, level}, EStreamUse::Kept);
            CBlockDeflater fresh({form, level}, EStreamUse::Fresh);
            for (const Bytes& block : Blocks()) {
                const SResult result = Through(kept, block, kRoom);
                EXPECT_FALSE(result.outcome.failed);
                ExpectSame(result, Through(fresh, block, kRoom));
            }
        }
    }
}

TEST(BlockStream, TheBytesAreThoseOfTheOneCallRoutine) {
    for (int level = 1; level <= 9; ++level) {
        CBlockDeflater kept({EStreamForm::Zlib, level}, EStreamUse::Kept);
        for (const Bytes& block : Blocks()) {
            Bytes expected(kRoom);
            uLongf length = kRoom;
            ASSERT_EQ(compress2(expected.data(), &length, block.data(), static_cast<uLong>(block.size()), level), Z_OK);
            expected.resize(length);
            EXPECT_EQ(Through(kept, block, kRoom).output, expected);
        }
    }
}

TEST(BlockStream, ABlockWithoutRoomFailsAndTheNextOneIsAsEver) {
    const Bytes noise = test::RandomBytes(8192, 1);
    CBlockDeflater kept({EStreamForm::Raw, 9}, EStreamUse::Kept);
    CBlockDeflater fresh({EStreamForm::Raw, 9}, EStreamUse::Fresh);
    for (const std::size_t room : {kRoom, std::size_t{100}, kRoom, std::size_t{1}, kRoom}) {
        const SResult result = Through(kept, noise, room);
        EXPECT_EQ(result.outcome.FailedIn(EStreamStep::Work), room != kRoom);
        ExpectSame(result, Through(fresh, noise, room));
    }
}

TEST(BlockStream, AResetStreamInflatesTheSameAlsoAfterDamage) {
    for (const EStreamForm form : {EStreamForm::Raw, EStreamForm::Zlib}) {
        CBlockDeflater deflater({form, 9}, EStreamUse::Kept);
        CBlockInflater kept({form}, EStreamUse::Kept);
        CBlockInflater fresh({form}, EStreamUse::Fresh);
        std::size_t failed = 0;
        for (const Bytes& block : Blocks()) {
            const Bytes whole = Through(deflater, block, kRoom).output;
            for (std::size_t spoilt = 0; spoilt < whole.size(); spoilt += whole.size() / 7 + 1) {
                ExpectSame(Through(kept, whole, block.size()), Through(fresh, whole, block.size()));
                EXPECT_EQ(Through(kept, whole, block.size()).output, block);
                Bytes bad = whole;
                bad[spoilt] ^= 0x55;
                const SResult result = Through(kept, bad, block.size());
                failed += result.outcome.failed ? 1U : 0U;
                ExpectSame(result, Through(fresh, bad, block.size()));
                const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(spoilt));
                ExpectSame(Through(kept, cut, block.size()), Through(fresh, cut, block.size()));
            }
        }
        EXPECT_GT(failed, 50U);
    }
}

TEST(BlockStream, AStreamThatCannotBeginSaysSo) {
    for (const EStreamUse use : {EStreamUse::Fresh, EStreamUse::Kept}) {
        CBlockDeflater deflater({EStreamForm::Raw, 10}, use);
        for (int i = 0; i < 2; ++i) {
            const SStreamOutcome outcome = Through(deflater, Bytes(10, 1), kRoom).outcome;
            EXPECT_TRUE(outcome.FailedIn(EStreamStep::Begin));
            EXPECT_EQ(outcome.result, Z_STREAM_ERROR);
            EXPECT_STREQ(outcome.message, "error");
        }
    }
}

}  // namespace
}  // namespace vantrel
