// Ctrl-C and the other requests to end: remembered when they come, acted on at the next unit of work, so that
// destructors remove what is unfinished.
#pragma once

namespace vantrel {

/// Thrown where the request is noticed. The exit status is 128 + the signal's number, 130 for Ctrl-C.
class CInterrupted {
public:
    explicit CInterrupted(int signal) : m_signal(signal) {}
    int ExitStatus() const { return 128 + m_signal; }

private:
    int m_signal;
};

/// From now on, a request to end the program is only remembered.
void CatchInterrupts();

/// Throws CInterrupted when the program was asked to end.
void ThrowIfInterrupted();

}  // namespace vantrel
