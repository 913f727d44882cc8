// The fixture of the tests that drive the shipped window program.
#pragma once

#include <gtest/gtest.h>

#include "files/native_file.h"
#include "resources/resource_ids.h"
#include "tests/support/test_folder.h"
#include "tests/window/driver/tested_program.h"

namespace vantrel::test {

/// A new folder with a copy of the program, which has not been started.
class CWindowTest : public ::testing::Test {
protected:
    CTestFolder m_folder;
    CTestedProgram m_program{m_folder.Path()};
};

}  // namespace vantrel::test
