// Any image into any form that is written, without an intermediate file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "files/output_file.h"
#include "image/image_source.h"
#include "operation/operation.h"

namespace vantrel {

struct SImageConversion {
    std::string inputPath;
    CImageSource& image;  ///< The image in that file.
    EForm form;           ///< Of the output: ISO, BIN, CSO, ZSO or DAX.
    std::string outputPath;
    EOutputManner manner = EOutputManner::CommitNew;
    std::uint32_t workers = 1;
    int level = 9;  ///< Of CSO and DAX, 1 to 9.
    /// Of CSO and ZSO, a power of two; no value: 2048 bytes, or 16384 if the output exceeds 2 GiB.
    std::optional<std::uint32_t> blockSize = std::nullopt;
    bool readBack = false;  ///< Compare the output with the image before it gets its name.
};

/// Writes the image in the wanted form; for BIN, also a CUE sheet. The output is the same for any number of workers.
/// Fails if the image cannot be read in full or the form cannot hold it.
void ConvertImage(const SImageConversion& conversion, COperation& operation);

/// Opens the input of a conversion. Throws CRefused, beyond what OpenImage refuses, if the file does not hold all of
/// its image.
std::unique_ptr<CImageSource> OpenInput(const std::string& path);

/// The same for conversions that open plain images themselves: null for those and for files of unknown form. Fails if
/// the file cannot be read; `openPattern` is the text for a file that cannot be opened.
std::unique_ptr<CImageSource> OpenContainer(const std::string& path, const char* openPattern, COperation& operation);

/// Warns of what the file has besides its image.
void WarnOfOtherParts(const CImageSource& image, const std::string& path, COperation& operation);

}  // namespace vantrel
