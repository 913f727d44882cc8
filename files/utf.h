// Conversion between the UTF-8 texts of the engine and the UTF-16 texts of Windows, without help of the system.
#pragma once

#include <string>
#include <string_view>

namespace vantrel {

/// UTF-16 (as wchar_t) of a UTF-8 text. A byte that belongs to no valid sequence becomes U+DC80 to U+DCFF, so that
/// Utf8Of gives the same bytes back.
std::wstring WideOf(std::string_view text);

/// UTF-8 of a UTF-16 text; the reverse of WideOf. Other unpaired surrogates are encoded in three bytes.
std::string Utf8Of(std::wstring_view text);

}  // namespace vantrel
