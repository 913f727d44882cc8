// Reading of the list of files that the walk through an image has written.
#pragma once

#include <cstdint>
#include <string>

#include "files/input_file.h"

namespace vantrel {

/// What an export takes from a line of the list.
struct SFileListLine {
    std::uint32_t start = 0;  ///< sector
    std::uint32_t size = 0;   ///< bytes
    /// The path without the separator that it begins with: "DIR\NAME". Empty when the line has none.
    std::string path;

    /// Whether a file can stand under this path: it neither is empty nor ends in a separator.
    bool NamesFile() const { return !path.empty() && path.back() != '\\'; }
};

class CFileListReader {
public:
    explicit CFileListReader(CInputFile& file) : m_file(file) { file.Seek(0); }

    /// The next line; false at the end.
    bool Next(SFileListLine& line);

private:
    bool ReadLine(std::string& text);

    CInputFile& m_file;
};

}  // namespace vantrel
