// A reason not to do what a command asks for, in words.
#pragma once

#include <stdexcept>

namespace vantrel {

/// Thrown by commands and turned into a line on stderr and the exit status 1. what() names the file and the cause.
class CRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vantrel
