// A conversion run again and again, each time with another one of its system calls failing. The folder that it works in
// is put back in between.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "tests/support/test_folder.h"
#include "tests/support/watched_calls.h"

namespace vantrel::test {

/// Everything in a folder: contents by path, folders with a closing '/'. The date and time in a layout are left out.
using FolderState = std::map<std::string, std::string>;

FolderState StateOf(const CTestFolder& folder);

/// Calls `run` once with no call failing, then for each of the calls that it made once with that one failing, and
/// `check` after every run, the first time with the fault number 0. Before each run the folder holds what it held in
/// the beginning. Expects that every fault comes to pass and that no file stays open. Gives the number of faults.
std::size_t SweepFaults(const CTestFolder& folder, const SSystem& system, const std::function<void()>& run,
                        const std::function<void(const SFault& fault)>& check);

}  // namespace vantrel::test
