#include "tests/support/raw_sector_check.h"

#include <array>
#include <vector>

namespace vantrel::test {

namespace {

/// The remainder of the message times x^32 divided by (x^16 + x^15 + x^2 + 1)(x^16 + x^2 + x + 1). Bits are in the
/// order of transmission, the least significant bit of each byte first; element i is the coefficient of x^i.
std::array<bool, 32> EdcRemainder(std::span<const std::uint8_t> message) {
    std::array<bool, 33> polynomial = {};
    for (const int a : {16, 15, 2, 0}) {
        for (const int b : {16, 2, 1, 0}) {
            const auto power = static_cast<std::size_t>(a + b);
            polynomial[power] = !polynomial[power];
        }
    }
    std::array<bool, 32> remainder = {};
    for (const std::uint8_t byte : message) {
        for (int bit = 0; bit < 8; ++bit) {
            const bool top = remainder[31] != ((byte >> bit & 1) != 0);
            for (std::size_t power = 31; power > 0; --power) {
                remainder[power] = remainder[power - 1] != (top && polynomial[power]);
            }
            remainder[0] = top && polynomial[0];
        }
    }
    return remainder;
}

bool IsEdcRight(std::span<const std::uint8_t> message, std::span<const std::uint8_t> stored) {
    const std::array<bool, 32> remainder = EdcRemainder(message);
    for (std::size_t i = 0; i < 32; ++i) {
        if (remainder[31 - i] != ((stored[i / 8] >> (i % 8) & 1) != 0)) {
            return false;
        }
    }
    return true;
}

/// The product in GF(2^8) with x^8 + x^4 + x^3 + x^2 + 1, by long multiplication and division.
unsigned Product(unsigned a, unsigned b) {
    unsigned product = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
        product ^= (b >> bit & 1U) != 0 ? a << bit : 0U;
    }
    for (unsigned bit = 15; bit >= 8; --bit) {
        product ^= (product >> bit & 1U) != 0 ? 0x11DU << (bit - 8) : 0U;
    }
    return product;
}

/// Whether the code word, as a polynomial whose constant term is the last symbol, has the zeros 1 and alpha = 2.
bool IsCodeWord(const std::vector<unsigned>& symbols) {
    unsigned atOne = 0;
    unsigned atAlpha = 0;
    for (const unsigned symbol : symbols) {
        atOne ^= symbol;
        atAlpha = Product(atAlpha, 2) ^ symbol;
    }
    return atOne == 0 && atAlpha == 0;
}

/// Byte `half` (0 or 1) of each word in bytes 12 to 2351 (ECMA-130, annex A).
class CWords {
public:
    CWords(std::span<const std::uint8_t> sector, bool headerIsZero, std::size_t half)
        : m_sector(sector), m_headerIsZero(headerIsZero), m_half(half) {}

    unsigned operator[](std::size_t word) const {
        return m_headerIsZero && word < 2 ? 0 : m_sector[12 + 2 * word + m_half];
    }

private:
    std::span<const std::uint8_t> m_sector;
    bool m_headerIsZero;
    std::size_t m_half;
};

std::string FaultOfParity(const CWords& words) {
    for (std::size_t column = 0; column < 43; ++column) {
        std::vector<unsigned> symbols;
        for (std::size_t row = 0; row < 26; ++row) {
            symbols.push_back(words[43 * row + column]);
        }
        if (!IsCodeWord(symbols)) {
            return "P parity of column " + std::to_string(column);
        }
    }
    for (std::size_t diagonal = 0; diagonal < 26; ++diagonal) {
        std::vector<unsigned> symbols;
        for (std::size_t i = 0; i < 43; ++i) {
            symbols.push_back(words[(44 * i + 43 * diagonal) % 1118]);
        }
        symbols.push_back(words[1118 + diagonal]);
        symbols.push_back(words[1144 + diagonal]);
        if (!IsCodeWord(symbols)) {
            return "Q parity of diagonal " + std::to_string(diagonal);
        }
    }
    return "";
}

std::string FaultOfFraming(std::span<const std::uint8_t> sector, std::uint32_t number) {
    for (std::size_t i = 0; i < 12; ++i) {
        if (sector[i] != (i == 0 || i == 11 ? 0x00 : 0xFF)) {
            return "sync";
        }
    }
    const std::uint32_t frames = number + 150;
    const std::uint32_t parts[] = {frames / 75 / 60, frames / 75 % 60, frames % 75};
    for (std::size_t i = 0; i < 3; ++i) {
        if (std::uint32_t{sector[12 + i]} / 16 * 10 + sector[12 + i] % 16 != parts[i] || sector[12 + i] % 16 > 9) {
            return "address";
        }
    }
    return "";
}

std::string FaultOfContent(std::span<const std::uint8_t> sector) {
    if (sector[15] == 1) {
        for (std::size_t i = 2068; i < 2076; ++i) {
            if (sector[i] != 0) {
                return "zeros after the EDC";
            }
        }
        return IsEdcRight(sector.first(2064), sector.subspan(2064, 4)) ? "" : "EDC";
    }
    if (sector[15] != 2) {
        return "mode";
    }
    const std::uint8_t subHeader[] = {0, 0, 8, 0, 0, 0, 8, 0};
    for (std::size_t i = 0; i < 8; ++i) {
        if (sector[16 + i] != subHeader[i]) {
            return "sub-header";
        }
    }
    return IsEdcRight(sector.subspan(16, 2056), sector.subspan(2072, 4)) ? "" : "EDC";
}

}  // namespace

std::string FaultOfRawSector(std::span<const std::uint8_t> sector, std::uint32_t number) {
    if (sector.size() != 2352) {
        return "length";
    }
    std::string fault = FaultOfFraming(sector, number);
    if (fault.empty()) {
        fault = FaultOfContent(sector);
    }
    for (std::size_t half = 0; half < 2 && fault.empty(); ++half) {
        fault = FaultOfParity(CWords(sector, sector[15] == 2, half));
    }
    return fault;
}

std::string FaultOfRawImage(std::span<const std::uint8_t> image) {
    if (image.size() % 2352 != 0) {
        return "the image has an incomplete sector";
    }
    for (std::uint32_t number = 0; number < image.size() / 2352; ++number) {
        const std::string fault = FaultOfRawSector(image.subspan(std::size_t{number} * 2352, 2352), number);
        if (!fault.empty()) {
            return "sector " + std::to_string(number) + ": " + fault;
        }
    }
    return "";
}

}  // namespace vantrel::test
