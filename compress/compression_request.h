// What the CSO and DAX conversions are asked to do.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>

#include "compress/cso_header.h"
#include "files/byte_source.h"
#include "files/output_file.h"

namespace vantrel {

struct SCompressionRequest {
    std::string chosenPath;  ///< The file that was chosen. The compressors check its volume descriptor.
    std::string imagePath;   ///< The file that is read. The window may form it from the base name of the chosen file.
    CByteSource* image = nullptr;  ///< The image in that file if the file is a container; null: the file is the image.
    std::string outputPath;
    std::string shownName;  ///< The image's name in messages; in the window, base name + ".iso".
    EOutputManner manner = EOutputManner::InPlace;
    bool strict = false;  ///< True in the console: refuses what the window lets pass.
    /// Threads that compress or expand, besides the conversion's own, which writes. 0: the conversion's own thread does
    /// everything, with a new zlib stream for each block.
    std::uint32_t workers = 0;
    std::optional<int> level;  ///< 1 to 9; no value: none is selected.
    /// CSO or ZSO, if an index is written.
    CsoMagic magic = kCsoMagic;
    /// Block size of a CSO or ZSO file, a power of two; no value: chosen by the length of the output.
    std::optional<std::uint32_t> blockSize;
    /// Index entries hold positions of 31 bits. A strict compression whose output is larger shifts them. Tests use
    /// fewer.
    std::int64_t largestCso = std::numeric_limits<std::int32_t>::max();
    /// Called with the complete output before it gets its name; ends the conversion if the output is wrong.
    std::function<void(COutputFile& output)> checkOutput;
    /// The text of the completion; null: that of the window.
    const char* doneText = nullptr;
};

/// The window's compression of `folder` (with its separator) + `fileName`: the image is base name + ".iso", found
/// without regard to case, and the output is base name + `extension` beside it.
SCompressionRequest WindowCompression(const std::string& folder, const std::string& fileName,
                                      const std::string& extension);

/// The window's expansion of a CSO file: the output is "new-" + base name + ".iso" beside the input.
SCompressionRequest WindowExpansion(const std::string& folder, const std::string& fileName);

/// The window's expansion of a DAX file: the input is base name + ".dax", found without regard to case, whatever the
/// extension of `fileName`.
SCompressionRequest WindowDaxExpansion(const std::string& folder, const std::string& fileName);

/// A strict conversion of exactly `input` into exactly `output`.
SCompressionRequest DirectConversion(const std::string& input, const std::string& output, EOutputManner manner,
                                     std::uint32_t workers, std::optional<int> level);

}  // namespace vantrel
