#include "tests/unit/compress/lz4_support.h"

#include <algorithm>
#include <random>

#include "files/byte_order.h"

namespace vantrel::test {

namespace {

constexpr std::size_t kSize = 1U << 20U;

/// The generator's own numbers are the same everywhere; distributions of the library are not.
class CRandom {
public:
    explicit CRandom(std::uint32_t seed) : m_generator(seed) {}

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(m_generator()) % limit; }
    std::uint8_t Byte() { return static_cast<std::uint8_t>(Below(256)); }

private:
    std::mt19937 m_generator;
};

template <typename Piece>
Bytes Filled(Piece appendPiece) {
    Bytes bytes;
    bytes.reserve(2 * kSize);
    while (bytes.size() < kSize) {
        appendPiece(bytes);
    }
    bytes.resize(kSize);
    return bytes;
}

void Append32(Bytes& bytes, std::uint32_t value) {
    const auto number = Le32(value);
    bytes.insert(bytes.end(), number.begin(), number.end());
}

Bytes Words() {
    static const char* const words[] = {"the",   "disc",  "of",   "an",     "image", "sector", "and",
                                        "reads", "block", "a",    "volume", "file",  "to",     "directory",
                                        "path",  "table", "with", "every",  "in",    "is"};
    CRandom random(1);
    return Filled([&](Bytes& bytes) {
        const std::string_view word = words[random.Below(20)];
        bytes.insert(bytes.end(), word.begin(), word.end());
        bytes.push_back(random.Below(12) == 0 ? '\n' : ' ');
    });
}

/// Structures with counters, flags and floating-point constants.
Bytes Records() {
    CRandom random(2);
    std::uint32_t number = 0;
    return Filled([&](Bytes& bytes) {
        for (const std::uint32_t value : {number, 0U, 0xFFFFFFFFU, number * 3, random.Below(8), 0x3F800000U,
                                          random.Below(2) * 0x3F000000U, random.Below(100)}) {
            Append32(bytes, value);
        }
        ++number;
    });
}

/// Areas of one colour, four bytes each, with a few other pixels.
Bytes Pixels() {
    CRandom random(3);
    return Filled([&](Bytes& bytes) {
        const std::size_t area = bytes.size() % 1024 / 64 + bytes.size() / 16384;
        const auto colour = static_cast<std::uint32_t>(area % 7) * 0x010203U + 0xFF000000U;
        Append32(bytes, random.Below(200) == 0 ? random.Below(0xFFFFFFFFU) : colour);
    });
}

Bytes Samples() {
    CRandom random(4);
    std::uint32_t level = 0;
    return Filled([&](Bytes& bytes) {
        level += random.Below(64) - 32;
        bytes.push_back(static_cast<std::uint8_t>(level));
        bytes.push_back(static_cast<std::uint8_t>(level >> 8U));
    });
}

/// Zeros with a byte here and there.
Bytes Sparse() {
    CRandom random(5);
    return Filled([&](Bytes& bytes) { bytes.push_back(random.Below(40) == 0 ? random.Byte() : std::uint8_t{0}); });
}

/// Runs of a few patterns of `period` bytes.
Bytes Runs(std::uint32_t period, std::uint32_t longest) {
    CRandom random(period + longest);
    return Filled([&](Bytes& bytes) {
        const std::uint32_t kind = random.Below(4);
        const std::uint32_t length = random.Below(longest);
        for (std::uint32_t i = 0; i < length; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(kind * 37 + i % period * (5 + kind)));
        }
    });
}

/// The same bytes again and again; one in `noise` changes, for good.
Bytes Periodic(std::size_t period, std::uint32_t noise) {
    CRandom random(static_cast<std::uint32_t>(period));
    return Filled([&](Bytes& bytes) {
        const bool isNew = bytes.size() < period || random.Below(noise) == 0;
        bytes.push_back(isNew ? random.Byte() : bytes[bytes.size() - period]);
    });
}

/// Copies of earlier bytes, short and long, near and far, with noise between them.
Bytes Copies() {
    CRandom random(6);
    return Filled([&](Bytes& bytes) {
        const std::uint32_t noise = bytes.empty() ? 1000 : random.Below(50);
        for (std::uint32_t i = 0; i < noise; ++i) {
            bytes.push_back(random.Byte());
        }
        const auto farthest = static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), 60000));
        const std::size_t from = bytes.size() - 1 - random.Below(farthest);
        const std::uint32_t length = 4 + random.Below(random.Below(2) == 0 ? 20 : 2000);
        for (std::uint32_t i = 0; i < length; ++i) {
            bytes.push_back(bytes[from + i]);
        }
    });
}

Bytes FewValues(std::uint32_t values) {
    CRandom random(values);
    return Filled([&](Bytes& bytes) { bytes.push_back(static_cast<std::uint8_t>(random.Below(values))); });
}

/// The beginning of this very program.
Bytes Code() {
    Bytes code = ReadWhole("/proc/self/exe");
    code.resize(kSize);
    return code;
}

std::size_t ReadLength(const Bytes& block, std::size_t& at, std::size_t length) {
    if (length == 15) {
        std::uint8_t step = 0;
        do {
            step = block.at(at++);
            length += step;
        } while (step == 255);
    }
    return length;
}

}  // namespace

std::span<const SLz4Data> Lz4Corpus() {
    static const SLz4Data corpus[] = {{"words", Words},
                                      {"text", [] { return TextLikeBytes(kSize, 1); }},
                                      {"code", Code},
                                      {"records", Records},
                                      {"pixels", Pixels},
                                      {"samples", Samples},
                                      {"noise", [] { return RandomBytes(kSize, 1); }},
                                      {"few_values", [] { return FewValues(5); }},
                                      {"zeros", [] { return Bytes(kSize); }},
                                      {"sparse", Sparse},
                                      {"runs", [] { return Runs(1, 3000); }},
                                      {"short_runs", [] { return Runs(1, 60); }},
                                      {"runs_of_pairs", [] { return Runs(2, 600); }},
                                      {"runs_of_words", [] { return Runs(4, 600); }},
                                      {"runs_of_eight", [] { return Runs(8, 600); }},
                                      {"period_7", [] { return Periodic(7, 0xFFFFFFFFU); }},
                                      {"period_700", [] { return Periodic(700, 350); }},
                                      {"period_3000", [] { return Periodic(3000, 1500); }},
                                      {"copies", Copies}};
    return corpus;
}

std::vector<SLz4Sequence> SequencesOf(const Bytes& block) {
    std::vector<SLz4Sequence> sequences;
    std::size_t position = 0;
    for (std::size_t at = 0; at < block.size();) {
        const std::uint8_t token = block.at(at++);
        const std::size_t literals = ReadLength(block, at, token >> 4U);
        at += literals;
        position += literals;
        if (at == block.size()) {
            sequences.push_back({position, literals, 0, 0});
            break;
        }
        const std::size_t offset = block.at(at) + block.at(at + 1) * std::size_t{256};
        at += 2;
        const std::size_t length = 4 + ReadLength(block, at, token & 15U);
        sequences.push_back({position, literals, length, offset});
        position += length;
    }
    return sequences;
}

}  // namespace vantrel::test
