#include "console/interrupt.h"

#include <atomic>
#include <csignal>

namespace vantrel {

namespace {

/// Global, because a signal handler can reach nothing else; atomic, because signals arrive on any thread.
std::atomic<int> g_signal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

void NoteSignal(int signal) {
    g_signal = signal;
}

/// A signal that is ignored at the start stays so, as nohup and shells expect of programs in the background.
void Catch(int signal) {
    if (std::signal(signal, SIG_IGN) != SIG_IGN) {
        std::signal(signal, NoteSignal);
    }
}

}  // namespace

void CatchInterrupts() {
    Catch(SIGINT);
    Catch(SIGTERM);
#ifdef SIGHUP
    Catch(SIGHUP);
#endif
#ifdef SIGPIPE
    // A closed pipe must not end the program before it has removed its temporary files.
    std::signal(SIGPIPE, SIG_IGN);
#endif
#ifdef SIGXFSZ
    // A file at its size limit is a failed write, like a full disk.
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
