// Conversion between UTF-8, used in the engine, and UTF-16, used by Windows, independent of the system.
#pragma once

#include <string>
#include <string_view>

namespace vantrel {

/// Converts UTF-8 to UTF-16 (as wchar_t). A byte that is not part of a valid sequence becomes U+DC80 to U+DCFF, so that
/// Utf8Of restores it.
std::wstring WideOf(std::string_view text);

/// Converts UTF-16 to UTF-8; the reverse of WideOf. Other unpaired surrogates are encoded in three bytes.
std::string Utf8Of(std::wstring_view text);

}  // namespace vantrel
