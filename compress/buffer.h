// Memory whose size a file determines: allocated without an exception, so that callers can report a failure in words.
#pragma once

#include <cstdint>
#include <memory>
#include <new>

namespace vantrel {

using Buffer = std::unique_ptr<std::uint8_t[]>;

/// `size` zero bytes; null if allocation fails. The caller has checked the size against the file.
inline Buffer TryAllocate(std::uint64_t size) {
    return Buffer(new (std::nothrow) std::uint8_t[static_cast<std::size_t>(size)]());
}

}  // namespace vantrel
