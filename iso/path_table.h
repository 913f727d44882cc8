// The path table of an image (ECMA-119 6.9): every directory's first sector and the way to it from the root.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "files/input_file.h"

namespace vantrel {

/// Makes a name fit into one line of a text file: control characters become '_'.
std::string PrintableName(std::string name);

class CPathTable {
public:
    /// More directories than a 16-bit number can name are not read.
    static constexpr std::size_t kMostDirectories = 65535;

    /// Reads records (ECMA-119 9.4, type L) from the start of a file up to the first without a name, or the end.
    /// `afterRecord` is called after each.
    void Read(CInputFile& file, const std::function<void()>& afterRecord);

    /// A table of the root alone, for an image whose own table is not there.
    void ReadRootOnly(std::uint32_t extent);

    std::size_t Count() const { return m_directories.size(); }
    /// First sector of a directory; `index` counts from 0, which is the root.
    std::uint32_t Extent(std::size_t index) const { return m_directories[index].extent; }

    /// The path of a directory: "" for the root, "\DIR\SUB" for others, at most `limit` characters; nothing is returned
    /// but false when it is longer.
    bool PathOf(std::size_t index, std::size_t limit, std::string& path) const;

private:
    struct SDirectory {
        std::uint32_t extent;
        std::size_t parent;  // index
        std::string name;
    };

    void HangLooseDirectoriesBelowRoot();

    std::vector<SDirectory> m_directories;
};

}  // namespace vantrel
