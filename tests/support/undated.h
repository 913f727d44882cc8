// Outputs of exports without the date of the run, so that those of different runs compare equal.
#pragma once

#include <string>
#include <string_view>

namespace vantrel::test {

/// The content of a file, in a layout with a fixed date, and in a gap file without the checksum of the layout.
std::string Undated(std::string_view path, std::string content);

}  // namespace vantrel::test
