// Waiting for what another program does: always for a condition and with a deadline, never for a fixed time.
#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

namespace vantrel::test {

using Milliseconds = std::chrono::milliseconds;

/// For what a program does at once. Long enough for a machine that is busy with other things.
inline constexpr Milliseconds kSoon{30'000};
/// For a conversion of a test image.
inline constexpr Milliseconds kConversion{180'000};

/// The driven program did not do, or does not have, what was asked for; what() says what. A test that lets it pass
/// fails with that text.
class CDriveFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Asks again and again until the condition holds; false when it did not within the time.
bool WaitUntil(const std::function<bool()>& condition, Milliseconds deadline = kSoon);

/// The same, and a CDriveFailure "no `what` within ... s" when it did not.
void Require(const std::string& what, const std::function<bool()>& condition, Milliseconds deadline = kSoon);

}  // namespace vantrel::test
