// What the CSO and DAX conversions are asked to do: which files, under which names, in which manner.
#pragma once

#include <cstdint>
#include <string>

#include "files/output_file.h"

namespace vantrel {

struct SCompressionRequest {
    std::string chosenPath;  ///< The file that was chosen; compressing examines its volume descriptor.
    std::string imagePath;   ///< The file that is read. In the window it may be named from the base name.
    std::string outputPath;
    std::string shownName;  ///< The image's name in messages; in the window base name + ".iso".
    EOutputManner manner = EOutputManner::InPlace;
    /// Threads that compress or expand, beside the conversion's own, which writes. None are used in place.
    std::uint32_t workers = 0;
};

/// The names that the window gives to a compression of `folder` (with its separator) + `fileName`: the image is base
/// name + ".iso", found without regard to case, and the output base name + `extension` beside it.
SCompressionRequest WindowCompression(const std::string& folder, const std::string& fileName,
                                      const std::string& extension);

/// The names that the window gives to an expansion: the output is "new-" + base name + ".iso" beside the input.
SCompressionRequest WindowExpansion(const std::string& folder, const std::string& fileName);

/// The same for a DAX file, whose input is base name + ".dax", found without regard to case, whatever was chosen.
SCompressionRequest WindowDaxExpansion(const std::string& folder, const std::string& fileName);

/// A conversion of exactly `input` into exactly `output`, by so many threads.
SCompressionRequest DirectConversion(const std::string& input, const std::string& output, EOutputManner manner,
                                     std::uint32_t workers);

}  // namespace vantrel
