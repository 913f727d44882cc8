#include "tests/window/driver/poll.h"

#include <thread>

namespace vantrel::test {

bool WaitUntil(const std::function<bool()>& condition, Milliseconds deadline) {
    constexpr Milliseconds kPause{10};
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return condition();
        }
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

void Require(const std::string& what, const std::function<bool()>& condition, Milliseconds deadline) {
    if (!WaitUntil(condition, deadline)) {
        throw CDriveFailure("no " + what + " within " + std::to_string(deadline.count() / 1000) + " s");
    }
}

}  // namespace vantrel::test
