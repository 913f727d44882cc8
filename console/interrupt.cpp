#include "console/interrupt.h"

#include <atomic>
#include <csignal>

namespace vantrel {

namespace {

/// The one piece of state that a signal handler can reach. A signal may come on any thread.
std::atomic<int> g_signal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

void Remember(int signal) {
    g_signal = signal;
}

}  // namespace

void CatchInterrupts() {
    std::signal(SIGINT, Remember);
    std::signal(SIGTERM, Remember);
#ifdef SIGHUP
    std::signal(SIGHUP, Remember);
#endif
#ifdef SIGPIPE
    // A reader that goes away must not end the program between a temporary file and its removal.
    std::signal(SIGPIPE, SIG_IGN);
#endif
#ifdef SIGXFSZ
    // A file that may not grow any more is a failed write, like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}

void ThrowIfInterrupted() {
    const int signal = g_signal;
    if (signal != 0) {
        throw CInterrupted(signal);
    }
}

}  // namespace vantrel
