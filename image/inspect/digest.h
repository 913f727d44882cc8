// The check values by which public disc databases know an image.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace vantrel {

/// CRC-32, MD5 and SHA-1 of bytes that come in pieces. The sums are libraries'.
class CImageDigest {
public:
    CImageDigest();
    CImageDigest(const CImageDigest&) = delete;
    CImageDigest& operator=(const CImageDigest&) = delete;
    ~CImageDigest();

    /// Takes bytes in, for the one and for the others: MD5 takes as long as all the rest, so that it can have a thread
    /// of its own.
    void UpdateMd5(std::span<const std::uint8_t> bytes);
    void UpdateOthers(std::span<const std::uint8_t> bytes);

    /// Lower-case hexadecimal. To be asked for when all bytes have come.
    std::string Crc32() const;
    std::string Md5() const;
    std::string Sha1() const;

private:
    struct SSums;
    std::unique_ptr<SSums> m_sums;
};

}  // namespace vantrel
