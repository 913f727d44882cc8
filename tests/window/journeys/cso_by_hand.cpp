#include "tests/window/journeys/cso_by_hand.h"

#include <zlib.h>

#include <span>

#include "tests/support/image_builder.h"

namespace vantrel::test {
namespace {

constexpr std::size_t kBlock = 2048;
constexpr std::size_t kHeader = 24;
constexpr std::uint32_t kPlain = 0x80000000;

Bytes Deflated(std::span<const std::uint8_t> block, int level) {
    Bytes output(2 * kBlock);
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = const_cast<Bytef*>(block.data());
    stream.avail_in = static_cast<uInt>(block.size());
    stream.next_out = output.data();
    stream.avail_out = static_cast<uInt>(output.size());
    deflate(&stream, Z_FINISH);
    output.resize(stream.total_out);
    deflateEnd(&stream);
    return output;
}

}  // namespace

Bytes CsoByHand(const Bytes& image, int level) {
    const std::size_t count = image.size() / kBlock;
    Bytes cso(kHeader + 4 * (count + 1));
    cso[0] = 'C';
    cso[1] = 'I';
    cso[2] = 'S';
    cso[3] = 'O';
    Write64(cso, 8, image.size());
    Write32(cso, 16, kBlock);
    cso[20] = 1;
    for (std::size_t i = 0; i < count; ++i) {
        const auto block = std::span(image).subspan(i * kBlock, kBlock);
        const Bytes deflated = Deflated(block, level);
        const bool isPlain = deflated.size() >= kBlock;
        Write32(cso, kHeader + 4 * i, static_cast<std::uint32_t>(cso.size()) | (isPlain ? kPlain : 0));
        if (isPlain) {
            cso.insert(cso.end(), block.begin(), block.end());
        } else {
            cso.insert(cso.end(), deflated.begin(), deflated.end());
        }
    }
    Write32(cso, kHeader + 4 * count, static_cast<std::uint32_t>(cso.size()));
    return cso;
}

Bytes UmdImage(std::size_t size) {
    SImageDescription description;
    description.kind = EImageKind::Umd;
    description.files = {{"PSP_GAME/SYSDIR/EBOOT.BIN", TextLikeBytes(size / 2, 1)},
                         {"PSP_GAME/USRDIR/VOICE.BIN", RandomBytes(size / 4, 2)},
                         {"PSP_GAME/USRDIR/SPARE.DAT", Bytes(size / 4)}};
    return BuildImage(description).bytes;
}

}  // namespace vantrel::test
