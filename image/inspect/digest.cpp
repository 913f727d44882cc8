#include "image/inspect/digest.h"

#include <gcrypt.h>
#include <zlib.h>

#include <stdexcept>

#include "operation/text.h"

namespace vantrel {

struct CImageDigest::SSums {
    uLong crc = crc32(0, nullptr, 0);
    gcry_md_hd_t md5 = nullptr;
    gcry_md_hd_t sha1 = nullptr;
};

CImageDigest::CImageDigest() : m_sums(std::make_unique<SSums>()) {
    gcry_check_version(nullptr);
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    if (gcry_md_open(&m_sums->md5, GCRY_MD_MD5, 0) != 0 || gcry_md_open(&m_sums->sha1, GCRY_MD_SHA1, 0) != 0) {
        throw std::runtime_error("MD5 and SHA-1 are not available on this system");
    }
}

CImageDigest::~CImageDigest() {
    gcry_md_close(m_sums->md5);
    gcry_md_close(m_sums->sha1);
}

void CImageDigest::UpdateMd5(std::span<const std::uint8_t> bytes) {
    gcry_md_write(m_sums->md5, bytes.data(), bytes.size());
}

void CImageDigest::UpdateOthers(std::span<const std::uint8_t> bytes) {
    m_sums->crc = crc32_z(m_sums->crc, bytes.data(), bytes.size());
    gcry_md_write(m_sums->sha1, bytes.data(), bytes.size());
}

namespace {

std::string Hexadecimal(const unsigned char* bytes, unsigned count) {
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += Format("%02x", bytes[i]);
    }
    return text;
}

}  // namespace

std::string CImageDigest::Crc32() const {
    return Format("%08lx", m_sums->crc);
}

std::string CImageDigest::Md5() const {
    return Hexadecimal(gcry_md_read(m_sums->md5, GCRY_MD_MD5), gcry_md_get_algo_dlen(GCRY_MD_MD5));
}

std::string CImageDigest::Sha1() const {
    return Hexadecimal(gcry_md_read(m_sums->sha1, GCRY_MD_SHA1), gcry_md_get_algo_dlen(GCRY_MD_SHA1));
}

}  // namespace vantrel
