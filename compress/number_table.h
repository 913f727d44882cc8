// A table of numbers in the byte order of the containers, little-endian: an index, or a table of positions or lengths.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <span>

#include "compress/buffer.h"
#include "files/byte_order.h"

namespace vantrel {

template <typename Number>
requires std::same_as<Number, std::uint16_t> || std::same_as<Number, std::uint32_t>
class CNumberTable {
public:
    /// `count` zeros. Returns false if allocation fails.
    bool Allocate(std::uint64_t count) {
        m_size = static_cast<std::size_t>(count * sizeof(Number));
        m_bytes = TryAllocate(m_size);
        return m_bytes != nullptr;
    }

    /// The table as a file holds it.
    std::span<std::uint8_t> Bytes() { return {m_bytes.get(), m_size}; }

    Number Get(std::uint64_t number) const {
        const std::span<const std::uint8_t, sizeof(Number)> bytes(At(number), sizeof(Number));
        if constexpr (sizeof(Number) == 2) {
            return LoadLe16(bytes);
        } else {
            return LoadLe32(bytes);
        }
    }

    void Set(std::uint64_t number, Number value) {
        if constexpr (sizeof(Number) == 2) {
            std::ranges::copy(Le16(value), At(number));
        } else {
            std::ranges::copy(Le32(value), At(number));
        }
    }

private:
    std::uint8_t* At(std::uint64_t number) const { return m_bytes.get() + number * sizeof(Number); }

    Buffer m_bytes;
    std::size_t m_size = 0;
};

}  // namespace vantrel
