// Ctrl-C and other requests to terminate. The signal handler only notes them; the next unit of work throws, so that
// destructors remove unfinished files.
#pragma once

namespace vantrel {

/// Thrown after a request to terminate. The exit status is 128 + the signal's number: 130 for Ctrl-C.
class CInterrupted {
public:
    explicit CInterrupted(int signal) : m_signal(signal) {}
    int ExitStatus() const { return 128 + m_signal; }

private:
    int m_signal;
};

/// From now on, requests to terminate are only noted.
void CatchInterrupts();

/// Throws CInterrupted if there was a request to terminate.
void ThrowIfInterrupted();

}  // namespace vantrel
