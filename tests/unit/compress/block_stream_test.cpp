// A stream that is reset for each block: the same bytes and the same faults as a new stream for each block.
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

SResult ResultOf(CBlockStream& stream, const Bytes& input, std::size_t room) {
    SResult result;
    result.output.resize(room);
    result.outcome = stream.Run(input, result.output);
    result.output.resize(result.outcome.produced);
    return result;
}

void ExpectSame(const SResult& reused, const SResult& fresh) {
    EXPECT_EQ(reused.output, fresh.output);
    EXPECT_EQ(reused.outcome.failedStep, fresh.outcome.failedStep);
    EXPECT_EQ(reused.outcome.result, fresh.outcome.result);
    EXPECT_STREQ(reused.outcome.message, fresh.outcome.message);
}

/// Blocks of all kinds and lengths.
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

TEST(BlockStream, DeflatesToTheSameBytesAfterAReset) {
    for (const EStreamForm form : {EStreamForm::Raw, EStreamForm::Zlib}) {
        for (int level = 1; level <= 9; ++level) {
            CBlockStream reused({form, level}, EStreamUse::Reused);
            CBlockStream fresh({form, level}, EStreamUse::Fresh);
            for (const Bytes& block : Blocks()) {
                const SResult result = ResultOf(reused, block, kRoom);
                EXPECT_FALSE(result.outcome.failedStep);
                ExpectSame(result, ResultOf(fresh, block, kRoom));
            }
        }
    }
}

TEST(BlockStream, DeflatesToTheBytesOfTheOneCallRoutine) {
    for (int level = 1; level <= 9; ++level) {
        CBlockStream reused({EStreamForm::Zlib, level}, EStreamUse::Reused);
        for (const Bytes& block : Blocks()) {
            Bytes expected(kRoom);
            uLongf length = kRoom;
            ASSERT_EQ(compress2(expected.data(), &length, block.data(), static_cast<uLong>(block.size()), level), Z_OK);
            expected.resize(length);
            EXPECT_EQ(ResultOf(reused, block, kRoom).output, expected);
        }
    }
}

TEST(BlockStream, RecoversAfterABlockThatDoesNotFitTheOutput) {
    const Bytes noise = test::RandomBytes(8192, 1);
    CBlockStream reused({EStreamForm::Raw, 9}, EStreamUse::Reused);
    CBlockStream fresh({EStreamForm::Raw, 9}, EStreamUse::Fresh);
    for (const std::size_t room : {kRoom, std::size_t{100}, kRoom, std::size_t{1}, kRoom}) {
        const SResult result = ResultOf(reused, noise, room);
        EXPECT_EQ(result.outcome.FailedIn(EStreamStep::Work), room != kRoom);
        ExpectSame(result, ResultOf(fresh, noise, room));
    }
}

TEST(BlockStream, InflatesToTheSameBytesAfterAResetEvenAfterDamage) {
    for (const EStreamForm form : {EStreamForm::Raw, EStreamForm::Zlib}) {
        CBlockStream deflater({form, 9}, EStreamUse::Reused);
        CBlockStream reused({form, std::nullopt}, EStreamUse::Reused);
        CBlockStream fresh({form, std::nullopt}, EStreamUse::Fresh);
        std::size_t failed = 0;
        for (const Bytes& block : Blocks()) {
            const Bytes whole = ResultOf(deflater, block, kRoom).output;
            for (std::size_t damaged = 0; damaged < whole.size(); damaged += whole.size() / 7 + 1) {
                ExpectSame(ResultOf(reused, whole, block.size()), ResultOf(fresh, whole, block.size()));
                EXPECT_EQ(ResultOf(reused, whole, block.size()).output, block);
                Bytes bad = whole;
                bad[damaged] ^= 0x55;
                const SResult result = ResultOf(reused, bad, block.size());
                failed += result.outcome.failedStep ? 1U : 0U;
                ExpectSame(result, ResultOf(fresh, bad, block.size()));
                const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(damaged));
                ExpectSame(ResultOf(reused, cut, block.size()), ResultOf(fresh, cut, block.size()));
            }
        }
        EXPECT_GT(failed, 50U);
    }
}

TEST(BlockStream, ReportsAStreamThatCannotBegin) {
    for (const EStreamUse use : {EStreamUse::Fresh, EStreamUse::Reused}) {
        CBlockStream deflater({EStreamForm::Raw, 10}, use);
        for (int i = 0; i < 2; ++i) {
            const SStreamOutcome outcome = ResultOf(deflater, Bytes(10, 1), kRoom).outcome;
            EXPECT_TRUE(outcome.FailedIn(EStreamStep::Begin));
            EXPECT_EQ(outcome.result, Z_STREAM_ERROR);
            EXPECT_STREQ(outcome.message, "error");
        }
    }
}

}  // namespace
}  // namespace vantrel
