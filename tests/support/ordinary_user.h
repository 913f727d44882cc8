// Part of a test without superuser rights, so that file permissions apply.
#pragma once

#include <sys/types.h>

#include "tests/support/test_folder.h"

namespace vantrel::test {

/// While it exists, the process accesses files as an ordinary user, who gets access to the folder.
class CAsOrdinaryUser {
public:
    explicit CAsOrdinaryUser(const CTestFolder& folder);
    CAsOrdinaryUser(const CAsOrdinaryUser&) = delete;
    CAsOrdinaryUser& operator=(const CAsOrdinaryUser&) = delete;
    ~CAsOrdinaryUser();

private:
    uid_t m_before;
};

}  // namespace vantrel::test
