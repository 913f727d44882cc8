// What both CSO directions settle about their zlib streams.
#pragma once

#include <zlib.h>

#include <cstdint>

namespace vantrel {

/// Window bits of a raw deflate stream: 32 KiB of window, no zlib header or check value.
inline constexpr int kRawDeflateWindow = -15;

/// Room of the buffer for a stored block, in blocks.
inline constexpr std::uint32_t kStoredRoom = 2;

/// What zlib says about a stream, or "error" when it says nothing.
inline const char* MessageOf(const z_stream& stream) {
    return stream.msg != nullptr ? stream.msg : "error";
}

}  // namespace vantrel
