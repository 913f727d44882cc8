#include "raw/edc.h"

#include <array>

#include "raw/edc_folding.h"

namespace vantrel {

namespace {

/// Bytes that one step processes.
constexpr std::size_t kStep = 16;

using EdcTable = std::array<std::uint32_t, 256>;

/// tables[k][b] is the contribution of byte b if k more bytes follow it in the step.
constexpr std::array<EdcTable, kStep> MakeTables() {
    std::array<EdcTable, kStep> tables = {};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1U) != 0 ? (value >> 1U) ^ kReversedEdcPolynomial : value >> 1U;
        }
        tables[0][byte] = value;
    }
    for (std::size_t k = 1; k < kStep; ++k) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t before = tables[k - 1][byte];
            tables[k][byte] = (before >> 8U) ^ tables[0][before & 0xFFU];
        }
    }
    return tables;
}

constexpr std::array<EdcTable, kStep> kTables = MakeTables();

}  // namespace

std::uint32_t EdcOf(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kShortestFolding || !CanFoldEdc()) {
        return EdcByTables(bytes);
    }
    const std::size_t rest = bytes.size() % kFoldedSize;
    const std::uint32_t edc = EdcByTables(FoldForEdc(bytes.first(bytes.size() - rest)));
    return EdcByTables(bytes.last(rest), edc);
}

std::uint32_t EdcByTables(std::span<const std::uint8_t> bytes, std::uint32_t edc) {
    while (bytes.size() >= kStep) {
        std::uint32_t next = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            next ^= kTables[kStep - 1 - i][bytes[i] ^ ((edc >> (8 * i)) & 0xFFU)];
        }
        for (std::size_t i = 4; i < kStep; ++i) {
            next ^= kTables[kStep - 1 - i][bytes[i]];
        }
        edc = next;
        bytes = bytes.subspan(kStep);
    }
    for (const std::uint8_t byte : bytes) {
        edc = (edc >> 8U) ^ kTables[0][(edc ^ byte) & 0xFFU];
    }
    return edc;
}

}  // namespace vantrel
