// Temporary folders, files and contents for tests.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantrel::test {

using Bytes = std::vector<std::uint8_t>;

/// A new empty folder in the system's temporary folder. The destructor removes it with its contents.
class CTestFolder {
public:
    CTestFolder();
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;
    ~CTestFolder();

    /// The folder's path with its closing separator.
    const std::string& Path() const { return m_path; }
    /// The path of a file in the folder.
    std::string operator/(std::string_view name) const { return m_path + std::string(name); }
    /// The names in the folder, sorted.
    std::vector<std::string> Names() const;

private:
    std::string m_path;
};

/// The content of a file; the test fails if it cannot be read.
Bytes ReadWhole(const std::string& path);
/// The same as text.
std::string ReadText(const std::string& path);
void WriteWhole(const std::string& path, const Bytes& content);
void WriteText(const std::string& path, std::string_view content);

/// Incompressible bytes; the same for the same seed on every machine.
Bytes RandomBytes(std::size_t count, std::uint64_t seed);
/// Bytes that compress well but are not all equal.
Bytes TextLikeBytes(std::size_t count, std::uint64_t seed);

/// Little-endian numbers in a byte vector; positions beyond its end throw.
std::uint32_t Read32(const Bytes& bytes, std::size_t offset);
std::uint64_t Read64(const Bytes& bytes, std::size_t offset);
void Write32(Bytes& bytes, std::size_t offset, std::uint32_t value);
void Write64(Bytes& bytes, std::size_t offset, std::uint64_t value);

}  // namespace vantrel::test
