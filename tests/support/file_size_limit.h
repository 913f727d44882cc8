// A disk that becomes full while a test writes to it.
#pragma once

#include <cstddef>

namespace vantrel::test {

/// While it exists, writes beyond this many bytes of a file fail.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(std::size_t bytes);
    CFileSizeLimit(const CFileSizeLimit&) = delete;
    CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;
    ~CFileSizeLimit();
};

}  // namespace vantrel::test
