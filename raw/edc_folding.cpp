// Folding replaces 128 bits of the message by their remainder modulo the polynomial, 128 or 512 bits further on: each
// half is multiplied by a power of x modulo the polynomial and added to the bits there. Four blocks of 128 bits are
// folded in parallel, because a multiplication takes several cycles.
#include "raw/edc_folding.h"

#include "raw/edc.h"

#ifdef __x86_64__
#include <wmmintrin.h>
#endif

namespace vantrel {

#ifdef __x86_64__

namespace {

#define VANTREL_FOLDS __attribute__((target("pclmul")))

constexpr std::size_t kLanes = 4;
static_assert(kShortestFolding == kLanes * kFoldedSize);

/// x^exponent modulo the polynomial, in reversed bit order, shifted left by one, because the product of two reversed
/// numbers is one bit too low.
constexpr long long FactorOf(int exponent) {
    std::uint32_t power = 0x80000000U;
    for (int i = 0; i < exponent; ++i) {
        power = (power & 1U) != 0 ? (power >> 1U) ^ kReversedEdcPolynomial : power >> 1U;
    }
    return static_cast<long long>(power) * 2;
}

/// Folds `state` into `next`, `Bits` further on. The lower half holds the higher powers of x. A factor is 32 bits wide
/// in a half of 64 bits, hence the 32 in both exponents.
template <int Bits>
VANTREL_FOLDS __m128i Fold(__m128i state, __m128i next) {
    const __m128i factors = _mm_set_epi64x(FactorOf(Bits - 32), FactorOf(Bits + 32));
    const __m128i lower = _mm_clmulepi64_si128(state, factors, 0x00);
    const __m128i upper = _mm_clmulepi64_si128(state, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(lower, upper), next);
}

VANTREL_FOLDS __m128i Load(const std::uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

}  // namespace

bool CanFoldEdc() {
    static const bool can = __builtin_cpu_supports("pclmul") != 0;
    return can;
}

VANTREL_FOLDS std::array<std::uint8_t, kFoldedSize> FoldForEdc(std::span<const std::uint8_t> bytes) {
    const std::uint8_t* next = bytes.data();
    const std::uint8_t* const end = next + bytes.size();
    __m128i lanes[kLanes];
    for (__m128i& lane : lanes) {
        lane = Load(next);
        next += kFoldedSize;
    }
    for (; end - next >= static_cast<std::ptrdiff_t>(kShortestFolding); next += kShortestFolding) {
        for (std::size_t i = 0; i < kLanes; ++i) {
            lanes[i] = Fold<512>(lanes[i], Load(next + i * kFoldedSize));
        }
    }
    __m128i state = lanes[0];
    for (std::size_t i = 1; i < kLanes; ++i) {
        state = Fold<128>(state, lanes[i]);
    }
    for (; next < end; next += kFoldedSize) {
        state = Fold<128>(state, Load(next));
    }
    std::array<std::uint8_t, kFoldedSize> folded = {};
    _mm_storeu_si128(reinterpret_cast<__m128i*>(folded.data()), state);
    return folded;
}

#else

bool CanFoldEdc() {
    return false;
}

std::array<std::uint8_t, kFoldedSize> FoldForEdc(std::span<const std::uint8_t> /*bytes*/) {
    return {};
}

#endif

}  // namespace vantrel
