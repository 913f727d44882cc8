// Splits the bytes of a fuzzer into the parts that a target needs, and joins parts for the seeds.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantrel::fuzz {

/// Takes parts from the front. Parts behind the end are empty or zero.
class CInputParts {
public:
    explicit CInputParts(std::span<const std::uint8_t> input) : m_left(input) {}

    bool IsEmpty() const { return m_left.empty(); }
    std::uint8_t Byte() { return m_left.empty() ? std::uint8_t{0} : Take(1)[0]; }
    std::uint16_t Number() {
        const auto low = Byte();
        return static_cast<std::uint16_t>(low | Byte() << 8U);
    }
    /// At most `count` bytes.
    std::span<const std::uint8_t> Take(std::size_t count) {
        const auto part = m_left.first(std::min(count, m_left.size()));
        m_left = m_left.subspan(part.size());
        return part;
    }
    /// A part that follows its length.
    std::span<const std::uint8_t> Part() { return Take(Number()); }
    std::span<const std::uint8_t> Rest() { return Take(m_left.size()); }

private:
    std::span<const std::uint8_t> m_left;
};

/// Writes what CInputParts reads.
class CPartWriter {
public:
    CPartWriter& Byte(std::uint8_t byte) {
        m_bytes.push_back(byte);
        return *this;
    }
    CPartWriter& Number(std::size_t number) {
        return Byte(static_cast<std::uint8_t>(number)).Byte(static_cast<std::uint8_t>(number >> 8U));
    }
    CPartWriter& Raw(std::span<const std::uint8_t> bytes) {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return *this;
    }
    CPartWriter& Part(std::span<const std::uint8_t> bytes) { return Number(bytes.size()).Raw(bytes); }
    CPartWriter& Part(std::string_view text) {
        return Part(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    }
    const std::vector<std::uint8_t>& Bytes() const { return m_bytes; }

private:
    std::vector<std::uint8_t> m_bytes;
};

inline std::string TextOf(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace vantrel::fuzz
