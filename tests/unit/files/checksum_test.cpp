#include "files/checksum.h"

#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

TEST(Checksum, AppendingIsLikeAdding) {
    const test::Bytes bytes = test::RandomBytes(5000, 1);
    for (const std::size_t split : {0U, 1U, 4999U, 5000U}) {
        SChecksum whole;
        whole.Add(bytes);
        SChecksum first;
        first.Add(std::span(bytes).first(split));
        SChecksum second;
        second.Add(std::span(bytes).subspan(split));
        first.Append(second);
        EXPECT_EQ(first, whole) << split;
    }
}

TEST(Checksum, AppendsMoreThanTwoGibibytes) {
    // Zeros of a length that 31 bits cannot hold, put together in two ways.
    SChecksum mebibyte;
    mebibyte.Add(test::Bytes(1 << 20U));
    SChecksum half;
    for (int i = 0; i < 1536; ++i) {
        half.Append(mebibyte);
    }
    SChecksum steps = {3, 0x352441C2};  // "abc"
    for (int i = 0; i < 3072; ++i) {
        steps.Append(mebibyte);
    }
    SChecksum zeros = half;
    zeros.Append(half);
    SChecksum whole = {3, 0x352441C2};
    whole.Append(zeros);
    EXPECT_EQ(whole, steps);
    EXPECT_EQ(whole.length, 3 + (3LL << 30U));
}

}  // namespace
}  // namespace vantrel
