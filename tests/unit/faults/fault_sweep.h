// Repeats a conversion, each time with a different system call failing, and restores its folder before each run.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "tests/support/test_folder.h"
#include "tests/support/watched_calls.h"

namespace vantrel::test {

/// The contents of a folder by path; paths of folders end in '/'. The date in a layout is replaced by a fixed text.
using FolderState = std::map<std::string, std::string>;

FolderState StateOf(const CTestFolder& folder);

/// Calls `run` once without a fault, and once with each of its system calls failing. Calls `check` after every run,
/// first with fault number 0. Restores the folder before each run. Expects that every fault occurs and that no file
/// stays open. Returns the number of faults.
std::size_t SweepFaults(const CTestFolder& folder, const SSystem& system, const std::function<void()>& run,
                        const std::function<void(const SFault& fault)>& check);

}  // namespace vantrel::test
