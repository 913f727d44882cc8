// The checksums by which public disc databases identify an image.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace vantrel {

/// CRC-32, MD5 and SHA-1 of bytes that arrive in parts.
class CImageDigest {
public:
    /// Throws std::runtime_error if the system does not provide MD5 and SHA-1.
    CImageDigest();
    CImageDigest(const CImageDigest&) = delete;
    CImageDigest& operator=(const CImageDigest&) = delete;
    ~CImageDigest();

    // The next bytes, once for MD5 and once for the others. Two threads may do these at the same time, because MD5
    // takes as long as all the rest.
    void UpdateMd5(std::span<const std::uint8_t> bytes);
    void UpdateOthers(std::span<const std::uint8_t> bytes);

    /// Lower-case hexadecimal; no bytes may follow.
    std::string Crc32() const;
    std::string Md5() const;
    std::string Sha1() const;

private:
    struct SSums;
    std::unique_ptr<SSums> m_sums;
};

}  // namespace vantrel
