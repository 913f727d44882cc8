// LZ4 blocks, compared with Debian's liblz4: each side reads what the other one writes, and ours is as small.
#include <gmock/gmock.h>
#include <lz4.h>
#include <lz4hc.h>

#include <memory>

#include "compress/lz4_decoder.h"
#include "compress/lz4_encoder.h"
#include "tests/unit/compress/lz4_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::SLz4Data;

constexpr int kReferenceLevel = 9;
/// Of our block, compared with the reference.
constexpr double kLargestRatio = 1.02;

const char* Chars(std::span<const std::uint8_t> bytes) {
    return reinterpret_cast<const char*>(bytes.data());
}

/// Level 0 is the library's fast encoder.
Bytes ReferenceEncoded(std::span<const std::uint8_t> in, int level) {
    const auto size = static_cast<int>(in.size());
    Bytes out(static_cast<std::size_t>(LZ4_compressBound(size)));
    const auto room = static_cast<int>(out.size());
    const auto to = reinterpret_cast<char*>(out.data());
    const int written = level == 0 ? LZ4_compress_default(Chars(in), to, size, room)
                                   : LZ4_compress_HC(Chars(in), to, size, room, level);
    out.resize(static_cast<std::size_t>(written));
    return out;
}

Bytes ReferenceDecoded(const Bytes& block, std::size_t size) {
    Bytes out(size);
    EXPECT_EQ(LZ4_decompress_safe(Chars(block), reinterpret_cast<char*>(out.data()), static_cast<int>(block.size()),
                                  static_cast<int>(size)),
              static_cast<int>(size));
    return out;
}

class Lz4Oracle : public testing::TestWithParam<SLz4Data> {
protected:
    void Compare(std::span<const std::uint8_t> in) {
        const Bytes content(in.begin(), in.end());
        Bytes block(content.size() + content.size() / 100 + 16);
        block.resize(m_encoder->Encode(content, block));
        EXPECT_EQ(ReferenceDecoded(block, content.size()), content);
        const std::size_t reference = ReferenceEncoded(content, kReferenceLevel).size();
        EXPECT_LE(static_cast<double>(block.size()), kLargestRatio * static_cast<double>(reference));
        for (const int level : {0, kReferenceLevel, LZ4HC_CLEVEL_MAX}) {
            Bytes out(content.size());
            EXPECT_EQ(DecodeLz4(ReferenceEncoded(content, level), out), content.size()) << level;
            EXPECT_EQ(out, content) << level;
        }
    }

private:
    std::unique_ptr<CLz4Encoder> m_encoder = std::make_unique<CLz4Encoder>();
};

TEST_P(Lz4Oracle, ReadsOurBlocksAndMakesNoneThatAreMuchSmaller) {
    const Bytes content = GetParam().make();
    for (const std::size_t size : {2048, 4096, 16384, 65536, 262144, 1048576}) {
        for (std::size_t at = 0; at < std::max<std::size_t>(size, 131072); at += size) {
            SCOPED_TRACE(std::to_string(size) + " bytes at " + std::to_string(at));
            Compare(std::span(content).subspan(at, size));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Data, Lz4Oracle, testing::ValuesIn(test::Lz4Corpus().begin(), test::Lz4Corpus().end()),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vantrel
