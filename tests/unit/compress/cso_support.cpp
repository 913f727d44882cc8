#include "tests/unit/compress/cso_support.h"

#include <zlib.h>

#include <algorithm>

namespace vantrel::test {

namespace {

constexpr std::size_t kMarkPosition = 33342;

void Append32(Bytes& bytes, std::uint32_t value) {
    bytes.resize(bytes.size() + 4);
    Write32(bytes, bytes.size() - 4, value);
}

}  // namespace

Bytes WithPspMark(Bytes bytes) {
    bytes.resize(std::max(bytes.size(), kMarkPosition + 3));
    const std::string mark = "PSP";
    std::copy(mark.begin(), mark.end(), bytes.begin() + kMarkPosition);
    return bytes;
}

SCompressionRequest WithLevel(SCompressionRequest request, int level) {
    request.level = level;
    return request;
}

SCompressionRequest CompressionOf(const CTestFolder& folder, const Bytes& image, const char* extension) {
    WriteWhole(folder / "game.mark.iso", WithPspMark({}));
    WriteWhole(folder / "game.iso", image);
    return WithLevel(WindowCompression(folder.Path(), "game.mark.iso", extension));
}

Bytes SHandMadeCso::Encode() const {
    Bytes bytes(magic.begin(), magic.end());
    Append32(bytes, 0);
    Append32(bytes, static_cast<std::uint32_t>(totalBytes));
    Append32(bytes, static_cast<std::uint32_t>(totalBytes >> 32U));
    Append32(bytes, blockSize);
    bytes.insert(bytes.end(), {1, align, 0, 0});
    for (const std::uint32_t entry : index) {
        Append32(bytes, entry);
    }
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

Bytes RawDeflate(const Bytes& bytes) {
    z_stream stream = {};
    deflateInit2(&stream, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    Bytes output(compressBound(static_cast<uLong>(bytes.size())) + 16);
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    deflate(&stream, Z_FINISH);
    output.resize(stream.total_out);
    deflateEnd(&stream);
    return output;
}

SHandMadeCso CsoOf(const std::vector<Bytes>& blocks, std::uint8_t align) {
    SHandMadeCso cso;
    cso.align = align;
    const std::size_t start = 24 + 4 * (blocks.size() + 1);
    const std::size_t unit = std::size_t{1} << align;
    const auto alignData = [&] {
        while ((start + cso.data.size()) % unit != 0) {
            cso.data.push_back(0xEE);
        }
    };
    for (const Bytes& block : blocks) {
        alignData();
        cso.index.push_back(static_cast<std::uint32_t>((start + cso.data.size()) >> align));
        const Bytes stored = RawDeflate(block);
        cso.data.insert(cso.data.end(), stored.begin(), stored.end());
        cso.totalBytes += block.size();
    }
    alignData();
    cso.index.push_back(static_cast<std::uint32_t>((start + cso.data.size()) >> align));
    return cso;
}

SCompressionRequest ExpansionOf(const CTestFolder& folder, const Bytes& content) {
    WriteWhole(folder / "game.cso", content);
    return WithLevel(WindowExpansion(folder.Path(), "game.cso"));
}

}  // namespace vantrel::test
