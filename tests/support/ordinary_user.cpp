#include "tests/support/ordinary_user.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantrel::test {

namespace {

/// The user "nobody" on Debian.
constexpr uid_t kOrdinaryUser = 65534;

}  // namespace

CAsOrdinaryUser::CAsOrdinaryUser(const CTestFolder& folder) : m_before(geteuid()) {
    if (m_before == 0) {
        EXPECT_EQ(chmod(folder.Path().c_str(), 0777), 0);
        EXPECT_EQ(seteuid(kOrdinaryUser), 0);
    }
}

CAsOrdinaryUser::~CAsOrdinaryUser() {
    EXPECT_EQ(seteuid(m_before), 0);
}

}  // namespace vantrel::test
