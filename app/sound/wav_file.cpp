#include "app/sound/wav_file.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "files/byte_order.h"
#include "files/input_file.h"

namespace vantrel {
namespace {

constexpr std::int64_t kRiffHeaderSize = 12;
constexpr std::size_t kChunkHeaderSize = 8;
constexpr std::size_t kChunkNameSize = 4;
constexpr std::size_t kFormatSize = 16;

/// More chunks than any sound has. Limits the time for a file that consists of empty chunks.
constexpr int kMostChunks = 10000;

struct SChunk {
    std::array<std::uint8_t, kChunkNameSize> name{};
    std::uint32_t size = 0;
    std::int64_t contentStart = 0;
};

std::optional<SChunk> ReadChunkHeader(CInputFile& file, std::int64_t position) {
    std::array<std::uint8_t, kChunkHeaderSize> header = {};
    if (file.ReadAt(position, header) != header.size()) {
        return std::nullopt;
    }
    SChunk chunk;
    std::copy_n(header.begin(), kChunkNameSize, chunk.name.begin());
    chunk.size = LoadLe32(std::span(header).last<4>());
    chunk.contentStart = position + static_cast<std::int64_t>(kChunkHeaderSize);
    return chunk;
}

bool IsNamedData(const SChunk& chunk) {
    constexpr std::string_view kName = "data";
    return std::equal(kName.begin(), kName.end(), chunk.name.begin(), [](char expected, std::uint8_t actual) {
        return actual == static_cast<std::uint8_t>(expected) ||
               actual == static_cast<std::uint8_t>(expected - 'a' + 'A');
    });
}

/// Position of the next chunk. A chunk of odd size is followed by a zero byte, which some programs omit. No chunk name
/// starts with a zero byte.
std::int64_t PositionAfter(CInputFile& file, const SChunk& chunk) {
    const std::int64_t end = chunk.contentStart + chunk.size;
    std::array<std::uint8_t, 1> padding = {};
    const bool isPadded = chunk.size % 2 != 0 && file.ReadAt(end, padding) == 1 && padding[0] == 0;
    return isPadded ? end + 1 : end;
}

std::optional<SChunk> FindData(CInputFile& file, SChunk chunk) {
    for (int count = 0; count < kMostChunks; ++count) {
        const std::optional<SChunk> next = ReadChunkHeader(file, PositionAfter(file, chunk));
        if (!next || IsNamedData(*next)) {
            return next;
        }
        chunk = *next;
    }
    return std::nullopt;
}

SWaveFormat FormatOf(std::span<const std::uint8_t, kFormatSize> bytes) {
    SWaveFormat format;
    format.formatTag = LoadLe16(bytes.subspan<0, 2>());
    format.channels = LoadLe16(bytes.subspan<2, 2>());
    format.samplesPerSecond = LoadLe32(bytes.subspan<4, 4>());
    format.averageBytesPerSecond = LoadLe32(bytes.subspan<8, 4>());
    format.blockAlign = LoadLe16(bytes.subspan<12, 2>());
    format.bitsPerSample = LoadLe16(bytes.subspan<14, 2>());
    return format;
}

/// Bytes of whole samples in the chunk. The size in its header may exceed the file.
std::int64_t UsableSize(const CInputFile& file, const SChunk& data, std::uint16_t blockAlign) {
    const std::int64_t available = file.Size() - data.contentStart;
    const std::int64_t size = std::min<std::int64_t>(data.size, available);
    return size - size % blockAlign;
}

}  // namespace

bool CWaveSound::Load(const std::string& path) {
    CInputFile file;
    if (!file.Open(path, ESharing::Nobody)) {
        return false;
    }
    const std::optional<SChunk> formatChunk = ReadChunkHeader(file, kRiffHeaderSize);
    std::array<std::uint8_t, kFormatSize> formatBytes = {};
    if (!formatChunk || formatChunk->size < kFormatSize || file.Read(formatBytes) != formatBytes.size()) {
        return false;
    }
    const SWaveFormat format = FormatOf(formatBytes);
    const std::optional<SChunk> data = FindData(file, *formatChunk);
    if (!data || format.blockAlign == 0) {
        return false;
    }
    const std::int64_t size = UsableSize(file, *data, format.blockAlign);
    if (size <= 0) {
        return false;
    }
    const std::size_t length = static_cast<std::size_t>(size);
    std::unique_ptr<std::uint8_t[]> samples(new (std::nothrow) std::uint8_t[length]);
    if (samples == nullptr || file.ReadAt(data->contentStart, {samples.get(), length}) != length) {
        return false;
    }
    m_format = format;
    m_samples = std::move(samples);
    m_length = length;
    return true;
}

}  // namespace vantrel
