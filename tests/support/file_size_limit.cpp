#include "tests/support/file_size_limit.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>

namespace vantrel::test {

namespace {

void LimitFileSize(rlim_t bytes) {
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace

CFileSizeLimit::CFileSizeLimit(std::size_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    LimitFileSize(bytes);
}

CFileSizeLimit::~CFileSizeLimit() {
    LimitFileSize(RLIM_INFINITY);
    std::signal(SIGXFSZ, SIG_DFL);
}

}  // namespace vantrel::test
