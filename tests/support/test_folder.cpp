#include "tests/support/test_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "files/native_file.h"
#include "files/path.h"

#ifdef _WIN32
#include "files/utf.h"
#endif

namespace vantrel::test {

namespace {

/// A UTF-8 path for standard streams, which expect another encoding in narrow paths on Windows.
std::filesystem::path StreamPath(const std::string& path) {
#ifdef _WIN32
    return WideOf(path);
#else
    return path;
#endif
}

}  // namespace

CTestFolder::CTestFolder() {
    std::random_device random;
    const std::filesystem::path base = std::filesystem::temp_directory_path();
    std::filesystem::path path;
    do {
        path = base / ("vantrel-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path));
    m_path = WithSeparator(path.string());
}

CTestFolder::~CTestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::vector<std::string> CTestFolder::Names() const {
    return ListFolder(m_path);
}

Bytes ReadWhole(const std::string& path) {
    const std::string text = ReadText(path);
    return {text.begin(), text.end()};
}

std::string ReadText(const std::string& path) {
    std::ifstream file(StreamPath(path), std::ios::binary | std::ios::ate);
    EXPECT_TRUE(file.is_open()) << path;
    std::string text(file.is_open() ? static_cast<std::size_t>(file.tellg()) : 0U, '\0');
    file.seekg(0);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    return text;
}

void WriteWhole(const std::string& path, const Bytes& content) {
    WriteText(path, std::string(content.begin(), content.end()));
}

void WriteText(const std::string& path, std::string_view content) {
    std::ofstream file(StreamPath(path), std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    EXPECT_TRUE(file.good()) << path;
}

Bytes RandomBytes(std::size_t count, std::uint64_t seed) {
    std::mt19937_64 engine(seed);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(engine() >> 56U);
    }
    return bytes;
}

Bytes TextLikeBytes(std::size_t count, std::uint64_t seed) {
    static constexpr std::string_view kWords[] = {"sector ", "track ", "volume ", "path table ", "record\r\n", "0000 "};
    std::mt19937_64 engine(seed);
    Bytes bytes;
    while (bytes.size() < count) {
        const std::string_view word = kWords[engine() % std::size(kWords)];
        bytes.insert(bytes.end(), word.begin(), word.end());
    }
    bytes.resize(count);
    return bytes;
}

std::uint32_t Read32(const Bytes& bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(bytes.at(offset)) | static_cast<std::uint32_t>(bytes.at(offset + 1)) << 8U |
           static_cast<std::uint32_t>(bytes.at(offset + 2)) << 16U |
           static_cast<std::uint32_t>(bytes.at(offset + 3)) << 24U;
}

std::uint64_t Read64(const Bytes& bytes, std::size_t offset) {
    return Read32(bytes, offset) | static_cast<std::uint64_t>(Read32(bytes, offset + 4)) << 32U;
}

void Write32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> (8U * i));
    }
}

void Write64(Bytes& bytes, std::size_t offset, std::uint64_t value) {
    Write32(bytes, offset, static_cast<std::uint32_t>(value));
    Write32(bytes, offset + 4, static_cast<std::uint32_t>(value >> 32U));
}

}  // namespace vantrel::test
