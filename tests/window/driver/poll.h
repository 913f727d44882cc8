// Waits for another program: for a condition, with a deadline, never for a fixed time.
#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

namespace vantrel::test {

using Milliseconds = std::chrono::milliseconds;

/// For everything a program does at once; long enough for a busy machine.
inline constexpr Milliseconds kSoon{30'000};
/// For a conversion of a test image.
inline constexpr Milliseconds kConversion{180'000};

/// The driven program did not do what was expected; what() says what. An uncaught exception fails the test with that
/// text.
class CDriveFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Polls until the condition is true. Returns false if the deadline passes.
bool WaitUntil(const std::function<bool()>& condition, Milliseconds deadline = kSoon);

/// The same, but throws CDriveFailure "no `what` within ... s" if the deadline passes.
void Require(const std::string& what, const std::function<bool()>& condition, Milliseconds deadline = kSoon);

}  // namespace vantrel::test
