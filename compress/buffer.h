// Memory whose size comes from a file: asked for without an exception, so that the refusal can be told in a text.
#pragma once

#include <cstdint>
#include <memory>
#include <new>

namespace vantrel {

using Buffer = std::unique_ptr<std::uint8_t[]>;

/// `size` zero bytes; empty when they cannot be had. The caller has checked the size against the file.
inline Buffer TryAllocate(std::uint64_t size) {
    return Buffer(new (std::nothrow) std::uint8_t[static_cast<std::size_t>(size)]());
}

}  // namespace vantrel
