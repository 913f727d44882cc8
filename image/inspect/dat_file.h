// The entries of a public disc database: an XML file in the format of Logiqx, with size and checksums of each image.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantrel {

/// Size and checksums of an image. Checksums are in lower-case hexadecimal; an entry may lack some of them.
struct SSums {
    std::int64_t bytes = 0;
    std::string crc32;
    std::string md5;
    std::string sha1;
};

struct SDatEntry {
    std::string game;
    std::string file;
    SSums sums;
};

class CDatFile {
public:
    /// Throws CRefused if the file cannot be read or is no database.
    explicit CDatFile(const std::string& path);

    const std::string& Path() const { return m_path; }
    /// The entry with this size and these checksums; null if there is none. Checksums that an entry lacks are not
    /// compared, but it must have at least one.
    const SDatEntry* Find(const SSums& sums) const;

private:
    std::string m_path;
    std::vector<SDatEntry> m_entries;
};

}  // namespace vantrel
