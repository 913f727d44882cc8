// The exception for files that cannot be used.
#pragma once

#include <stdexcept>

namespace vantrel {

/// Thrown where no result can be returned for a file; what() names the file and the cause. The console program prints
/// it and exits with status 1.
class CRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vantrel
