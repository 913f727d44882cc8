// The image that a layout describes, read by position without writing it: leading structures, gaps and listed files at
// their places, zeros elsewhere.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "files/byte_source.h"
#include "files/checksum.h"
#include "files/input_file.h"
#include "iml/layout/gap_file.h"

namespace vantrel {

class CComposedImage : public CByteSource {
public:
    /// `length` is that of the image, in bytes; whatever reaches beyond it is cut.
    explicit CComposedImage(std::int64_t length) : m_length(length) {}

    // Each part takes the bytes that no earlier part has. Sources and paths must outlive the image.

    /// A file that is opened when it is read; returns its number.
    std::size_t AddFile(std::int64_t position, std::int64_t length, const std::string& path);
    void AddGaps(CGapFileReader& gaps);
    /// The first `length` bytes of a source.
    void AddSource(std::int64_t position, std::int64_t length, CByteSource& source);
    void AddBytes(std::int64_t position, std::vector<std::uint8_t> bytes);

    std::int64_t Size() const override { return m_length; }
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override;

    /// From now on, reads in ascending order compute checksums.
    void StartSums();
    /// The checksum of everything read from position 0 on.
    const SChecksum& Sum() const { return m_sum; }
    /// The checksum of file `number`, as far as it was read.
    const SChecksum& FileSum(std::size_t number) const { return m_files[number].sum; }

    /// Why a file could not be read completely; empty if none failed.
    const std::string& Problem() const { return m_problem; }

private:
    enum class EPart { File, Gap, Source, Bytes };

    struct SPart {
        std::int64_t end;  ///< in the image
        EPart kind;
        std::size_t index;    ///< of the file, gap, source or bytes
        std::int64_t origin;  ///< position in the image of its first byte
    };

    struct SFile {
        const std::string* path = nullptr;
        SChecksum sum;
    };

    void Add(std::int64_t position, std::int64_t length, EPart kind, std::size_t index);
    std::size_t ReadPart(const SPart& part, std::int64_t position, std::span<std::uint8_t> buffer);
    std::size_t ReadFile(std::size_t index, std::int64_t offset, std::span<std::uint8_t> buffer);
    void AddToSums(const SPart* part, std::int64_t position, std::span<const std::uint8_t> bytes);

    const std::int64_t m_length;
    std::map<std::int64_t, SPart> m_parts;  ///< by first byte; parts do not overlap
    std::vector<SFile> m_files;
    CGapFileReader* m_gaps = nullptr;
    std::vector<CByteSource*> m_sources;
    std::vector<std::vector<std::uint8_t>> m_bytes;
    CInputFile m_openFile;
    std::size_t m_openIndex = 0;
    bool m_sums = false;
    SChecksum m_sum;
    std::string m_problem;
};

}  // namespace vantrel
