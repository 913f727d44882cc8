#include "image/inspect/digest.h"

#include <gcrypt.h>

#include <mutex>
#include <stdexcept>

#include "operation/text.h"

namespace vantrel {

namespace {

/// Once, before the library is used on several threads.
void StartLibrary() {
    static std::once_flag isStarted;
    std::call_once(isStarted, [] {
        gcry_check_version(nullptr);  // starts the library; it must be the first call
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    });
}

}  // namespace

struct CImageDigest::SSums {
    gcry_md_hd_t md5 = nullptr;
    gcry_md_hd_t others = nullptr;  ///< SHA-1 and CRC-32
};

CImageDigest::CImageDigest() : m_sums(std::make_unique<SSums>()) {
    StartLibrary();
    if (gcry_md_open(&m_sums->md5, GCRY_MD_MD5, 0) != 0 || gcry_md_open(&m_sums->others, GCRY_MD_SHA1, 0) != 0 ||
        gcry_md_enable(m_sums->others, GCRY_MD_CRC32) != 0) {
        throw std::runtime_error("MD5 and SHA-1 are not available on this system");
    }
}

CImageDigest::~CImageDigest() {
    gcry_md_close(m_sums->md5);
    gcry_md_close(m_sums->others);
}

void CImageDigest::UpdateMd5(std::span<const std::uint8_t> bytes) {
    gcry_md_write(m_sums->md5, bytes.data(), bytes.size());
}

void CImageDigest::UpdateOthers(std::span<const std::uint8_t> bytes) {
    gcry_md_write(m_sums->others, bytes.data(), bytes.size());
}

namespace {

std::string Hexadecimal(gcry_md_hd_t digest, gcry_md_algos algorithm) {
    const unsigned char* const bytes = gcry_md_read(digest, algorithm);
    std::string text;
    for (unsigned i = 0; i < gcry_md_get_algo_dlen(algorithm); ++i) {
        text += Format("%02x", bytes[i]);
    }
    return text;
}

}  // namespace

std::string CImageDigest::Crc32() const {
    return Hexadecimal(m_sums->others, GCRY_MD_CRC32);
}

std::string CImageDigest::Md5() const {
    return Hexadecimal(m_sums->md5, GCRY_MD_MD5);
}

std::string CImageDigest::Sha1() const {
    return Hexadecimal(m_sums->others, GCRY_MD_SHA1);
}

}  // namespace vantrel
