// A stretch of a test without the rights of the superuser, whom no permission stops.
#pragma once

#include <sys/types.h>

#include "tests/support/test_folder.h"

namespace vantrel::test {

/// While it lives, files are opened as an ordinary user would open them. The folder is opened to that user.
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
