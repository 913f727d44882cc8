// The directory records behind the entries of a layout. The layout alone is ambiguous: it shortens the range of a file
// that shares its first sector with another one. The records in the leading structures say where each file lies and how
// long it is.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "files/byte_source.h"
#include "iso/contents.h"

namespace vantrel {

class CRecordedFiles {
public:
    /// Without any record.
    CRecordedFiles() = default;
    /// Reads the directories of the leading structures.
    explicit CRecordedFiles(CByteSource& leading);

    CRecordedFiles(const CRecordedFiles&) = delete;
    CRecordedFiles& operator=(const CRecordedFiles&) = delete;

    /// The record of the entry with this path and these sectors, both inclusive; null if there is none. The path may
    /// start with a folder that the layout puts before every path.
    const SContentFile* Find(const std::string& path, std::uint32_t first, std::uint32_t last) const;

    /// All files of the directories, in the order of their first sectors.
    const std::vector<SContentFile>& All() const { return m_contents.files; }

private:
    SContents m_contents;
    std::multimap<std::string, const SContentFile*> m_byPath;
};

}  // namespace vantrel
