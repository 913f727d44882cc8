// Reading of the list of files that the walk through an image has written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

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
    bool ReadLine();
    bool FillChunk();

    CInputFile& m_file;
    std::string m_text;                 ///< of the line read last
    std::vector<std::uint8_t> m_chunk;  ///< Read ahead; what is left of it begins at m_next.
    std::size_t m_next = 0;
};

}  // namespace vantrel
