#include "tests/unit/compress/lz4_reference.h"

#include <gmock/gmock.h>
#include <lz4.h>
#include <lz4hc.h>

#include <algorithm>

namespace vantrel::test {

static_assert(kMostLz4ReferenceLevel == LZ4HC_CLEVEL_MAX);

namespace {

const char* Chars(std::span<const std::uint8_t> bytes) {
    return reinterpret_cast<const char*>(bytes.data());
}

}  // namespace

Bytes ReferenceLz4Block(std::span<const std::uint8_t> in, int level) {
    const auto size = static_cast<int>(in.size());
    Bytes out(static_cast<std::size_t>(LZ4_compressBound(size)));
    const auto room = static_cast<int>(out.size());
    const auto to = reinterpret_cast<char*>(out.data());
    const int written = level == 0 ? LZ4_compress_default(Chars(in), to, size, room)
                                   : LZ4_compress_HC(Chars(in), to, size, room, level);
    out.resize(static_cast<std::size_t>(written));
    return out;
}

Bytes ReferenceDecodedLz4(const Bytes& block, std::size_t size) {
    Bytes out(size);
    EXPECT_EQ(LZ4_decompress_safe(Chars(block), reinterpret_cast<char*>(out.data()), static_cast<int>(block.size()),
                                  static_cast<int>(size)),
              static_cast<int>(size));
    return out;
}

void ForEachLz4Block(const Bytes& content, const std::function<void(std::span<const std::uint8_t>)>& compare) {
    for (const std::size_t size : {2048, 4096, 16384, 65536, 262144, 1048576}) {
        for (std::size_t at = 0; at < std::max<std::size_t>(size, 131072); at += size) {
            SCOPED_TRACE(std::to_string(size) + " bytes at " + std::to_string(at));
            compare(std::span(content).subspan(at, size));
        }
    }
}

}  // namespace vantrel::test
