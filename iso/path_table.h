// The path table of an image (ECMA-119 6.9): the first sector of every directory and its path from the root.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "files/byte_source.h"

namespace vantrel {

/// Replaces the characters that would break a line of a layout by '_'. Other control characters stay.
std::string LineName(std::string name);

class CPathTable {
public:
    /// Directories are numbered in 16 bits; further records are not read.
    static constexpr std::size_t kMostDirectories = 65535;

    /// Reads records (ECMA-119 9.4, type L) from `length` bytes at `position` of the image, up to the first record
    /// without a name. Calls `afterRecord` after each.
    void Read(CByteSource& image, std::int64_t position, std::int64_t length, const std::function<void()>& afterRecord);

    /// Makes a table of the root alone, for an image without a usable table.
    void ReadRootOnly(std::uint32_t extent);

    std::size_t Count() const { return m_directories.size(); }
    /// First sector of a directory; `index` counts from 0, which is the root.
    std::uint32_t Extent(std::size_t index) const { return m_directories[index].extent; }

    /// Forms the path of a directory: "" for the root, "\DIR\SUB" for others. False if it is longer than `limit`.
    bool PathOf(std::size_t index, std::size_t limit, std::string& path) const;

private:
    struct SDirectory {
        std::uint32_t extent;
        std::size_t parent;  // index
        std::string name;
    };

    void RepairParents();

    std::vector<SDirectory> m_directories;
};

}  // namespace vantrel
