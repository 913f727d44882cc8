// Both codes are Reed-Solomon codes over GF(2^8), applied separately to the upper and the lower bytes of 16-bit words.
// The area is a matrix of 26 rows (24 of data, 2 of P) by 43 words. P runs along the columns, Q along the diagonals.
// All columns, and then all diagonals, are processed in parallel, row by row, so that the compiler can use vector
// instructions.
//
// A code word is its data symbols followed by two parity symbols a and b, such that
//     sum of all symbols = 0      and      sum of symbol x alpha^(number of symbols that follow) = 0.
#include "raw/parity.h"

#include <algorithm>
#include <array>

namespace vantrel {

namespace {

constexpr std::size_t kWordSize = 2;
constexpr std::size_t kColumns = 43;
constexpr std::size_t kDataRows = 24;
constexpr std::size_t kRows = 26;
constexpr std::size_t kRowSize = kColumns * kWordSize;
constexpr std::size_t kDiagonalsSize = kRows * kWordSize;

static_assert(kDataRows * kRowSize == kPParityOffset - kAddressOffset);
static_assert(kRows * kRowSize == kQParityOffset - kAddressOffset);
static_assert(kRows * kRowSize + 2 * kDiagonalsSize == kParityAreaSize);

/// x^8 modulo the field's polynomial x^8 + x^4 + x^3 + x^2 + 1.
constexpr std::uint8_t kFieldRemainder = 0x1D;

/// The product with alpha, the field's primitive element.
constexpr std::uint8_t TimesAlpha(std::uint8_t value) {
    const std::uint8_t carry = static_cast<std::int8_t>(value) < 0 ? kFieldRemainder : std::uint8_t{0};
    return static_cast<std::uint8_t>(static_cast<std::uint8_t>(value + value) ^ carry);
}

/// alpha^255 = 1, so every negative power equals a positive one.
constexpr int kPowerPeriod = 255;

constexpr std::uint8_t PowerOfAlpha(int exponent) {
    std::uint8_t power = 1;
    for (int i = 0; i < (exponent + kPowerPeriod) % kPowerPeriod; ++i) {
        power = TimesAlpha(power);
    }
    return power;
}

/// 1 / (alpha + 1).
constexpr std::uint8_t MakeQuotientOfOne() {
    for (int value = 1; value <= kPowerPeriod; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        if ((TimesAlpha(byte) ^ byte) == 1) {
            return byte;
        }
    }
    return 0;
}

/// 1, alpha, alpha^2, ... divided by alpha + 1: the quotient of each bit of a dividend.
constexpr std::array<std::uint8_t, 8> MakeQuotients() {
    std::array<std::uint8_t, 8> quotients = {};
    std::uint8_t quotient = MakeQuotientOfOne();
    for (std::uint8_t& ofBit : quotients) {
        ofBit = quotient;
        quotient = TimesAlpha(quotient);
    }
    return quotients;
}

constexpr std::array<std::uint8_t, 8> kQuotients = MakeQuotients();

/// 0xFF if the highest bit is set, otherwise 0.
constexpr std::uint8_t MaskOf(std::uint8_t value) {
    return static_cast<std::int8_t>(value) < 0 ? std::uint8_t{0xFF} : std::uint8_t{0};
}

/// The parity symbols a of code words, from the sums of their data symbols. The symbols b are plain ^ a.
template <std::size_t Width>
std::array<std::uint8_t, Width> FirstParity(const std::array<std::uint8_t, Width>& plain,
                                            const std::array<std::uint8_t, Width>& weighted) {
    std::array<std::uint8_t, Width> rest = {};
    std::array<std::uint8_t, Width> parity = {};
    for (std::size_t i = 0; i < Width; ++i) {
        rest[i] = static_cast<std::uint8_t>(plain[i] ^ weighted[i]);
    }
    for (std::size_t bit = kQuotients.size(); bit-- > 0;) {
        for (std::size_t i = 0; i < Width; ++i) {
            parity[i] = static_cast<std::uint8_t>(parity[i] ^ (MaskOf(rest[i]) & kQuotients[bit]));
            rest[i] = static_cast<std::uint8_t>(rest[i] + rest[i]);
        }
    }
    return parity;
}

/// The sums of `Width` columns of symbols: plain, and weighted by alpha^(number of rows that follow).
template <std::size_t Width>
struct SSums {
    std::array<std::uint8_t, Width> plain = {};
    std::array<std::uint8_t, Width> weighted = {};

    void Add(const std::uint8_t* row) {
        for (std::size_t i = 0; i < Width; ++i) {
            plain[i] = static_cast<std::uint8_t>(plain[i] ^ row[i]);
            weighted[i] = static_cast<std::uint8_t>(TimesAlpha(weighted[i]) ^ row[i]);
        }
    }
};

/// A row, extended to a whole number of vectors. The results for the extra bytes are not used.
constexpr std::size_t kWideRowSize = 96;

void PutP(std::uint8_t* area) {
    SSums<kWideRowSize> sums;
    for (std::size_t row = 0; row < kDataRows; ++row) {
        sums.Add(area + row * kRowSize);
    }
    for (std::uint8_t& sum : sums.weighted) {
        sum = TimesAlpha(TimesAlpha(sum));
    }
    const auto parity = FirstParity(sums.plain, sums.weighted);
    std::uint8_t* const first = area + kDataRows * kRowSize;
    std::uint8_t* const second = first + kRowSize;
    for (std::size_t i = 0; i < kRowSize; ++i) {
        first[i] = parity[i];
        second[i] = static_cast<std::uint8_t>(sums.plain[i] ^ parity[i]);
    }
}

// Q: the c-th of the 45 symbols of diagonal n is in column c, row (n + c) modulo 26. If every row is shifted left by
// one word relative to the row above it, the symbols of a diagonal are below each other, in up to three lanes that are
// 26 apart: the lane of row r, column c is c - r + 25. Lanes without a symbol hold zeros.

/// 68 lanes are used; 72 are a whole number of vectors, and 78 are three times the number of diagonals.
constexpr std::size_t kLanes = 72;
constexpr std::size_t kLanesSize = kLanes * kWordSize;
constexpr std::size_t kFoldedLanesSize = 3 * kDiagonalsSize;

/// A symbol of lane p in row r has the weight alpha^(44 - c) = alpha^(25 - r) x alpha^(44 - p). The sums contain the
/// first factor. This is the second one, times 1, alpha, alpha^2, ...: one product for each bit of the other operand.
using LaneFactors = std::array<std::array<std::uint8_t, kLanesSize>, 8>;

constexpr LaneFactors MakeLaneFactors() {
    LaneFactors factors = {};
    for (std::size_t i = 0; i < kLanesSize; ++i) {
        std::uint8_t factor = PowerOfAlpha(static_cast<int>(kColumns) + 1 - static_cast<int>(i / kWordSize));
        for (auto& ofBit : factors) {
            ofBit[i] = factor;
            factor = TimesAlpha(factor);
        }
    }
    return factors;
}

constexpr LaneFactors kLaneFactors = MakeLaneFactors();

using FoldedLanes = std::array<std::uint8_t, kFoldedLanesSize>;

FoldedLanes TimesLaneFactors(std::array<std::uint8_t, kLanesSize> values) {
    FoldedLanes products = {};
    for (std::size_t bit = kLaneFactors.size(); bit-- > 0;) {
        const auto& factors = kLaneFactors[bit];
        for (std::size_t i = 0; i < kLanesSize; ++i) {
            products[i] = static_cast<std::uint8_t>(products[i] ^ (MaskOf(values[i]) & factors[i]));
            values[i] = static_cast<std::uint8_t>(values[i] + values[i]);
        }
    }
    return products;
}

using DiagonalBytes = std::array<std::uint8_t, kDiagonalsSize>;

DiagonalBytes Folded(const FoldedLanes& lanes) {
    DiagonalBytes sums;
    for (std::size_t i = 0; i < kDiagonalsSize; ++i) {
        sums[i] = static_cast<std::uint8_t>(lanes[i] ^ lanes[i + kDiagonalsSize] ^ lanes[i + 2 * kDiagonalsSize]);
    }
    return sums;
}

SSums<kLanesSize> SumsOfDiagonals(const std::uint8_t* area) {
    std::array<std::uint8_t, kRows* kLanesSize> skewed = {};
    for (std::size_t row = 0; row < kRows; ++row) {
        std::copy_n(area + row * kRowSize, kRowSize, skewed.data() + row * kLanesSize + (kRows - 1 - row) * kWordSize);
    }
    SSums<kLanesSize> sums;
    for (std::size_t row = 0; row < kRows; ++row) {
        sums.Add(skewed.data() + row * kLanesSize);
    }
    return sums;
}

void PutQ(std::uint8_t* area) {
    const SSums<kLanesSize> sums = SumsOfDiagonals(area);
    const FoldedLanes weighted = TimesLaneFactors(sums.weighted);
    FoldedLanes plain = {};
    std::copy(sums.plain.begin(), sums.plain.end(), plain.begin());
    const DiagonalBytes plainSums = Folded(plain);
    const DiagonalBytes parity = FirstParity(plainSums, Folded(weighted));
    std::uint8_t* const first = area + kRows * kRowSize;
    std::uint8_t* const second = first + kDiagonalsSize;
    for (std::size_t i = 0; i < kDiagonalsSize; ++i) {
        // Diagonal n is in lane 25 - n. The two bytes of a word keep their order.
        const std::size_t lane = (kRows - 1 - i / kWordSize) * kWordSize + i % kWordSize;
        first[i] = parity[lane];
        second[i] = static_cast<std::uint8_t>(plainSums[lane] ^ parity[lane]);
    }
}

}  // namespace

void PutParity(std::span<std::uint8_t, kParityAreaSize> area) {
    PutP(area.data());
    PutQ(area.data());
}

}  // namespace vantrel
