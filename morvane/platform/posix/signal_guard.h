// Writes that fail without ending the process.
#pragma once

#include <cerrno>
#include <csignal>
#include <ctime>

namespace morvane::platform {

/// Keeps the signals that a failing write sends, and that would end the process, from this thread: those of a pipe that
/// nobody reads and of a file at the limit of its size. `errno` stays.
class SignalGuard {
public:
    SignalGuard() noexcept {
        sigset_t guarded;
        sigemptyset(&guarded);
        sigaddset(&guarded, SIGPIPE);
        sigaddset(&guarded, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &guarded, &before);
    }
    SignalGuard(SignalGuard const &) = delete;
    ~SignalGuard() {
        int const error = errno;
        if (error == EPIPE || error == EFBIG) {
            take(error == EPIPE ? SIGPIPE : SIGXFSZ);
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        errno = error;
    }

    SignalGuard & operator=(SignalGuard const &) = delete;

private:
    /// A signal that was kept off before stays for whoever does so.
    void take(int signal) const noexcept {
        if (sigismember(&before, signal) == 1) {
            return;
        }
        sigset_t sent;
        sigemptyset(&sent);
        sigaddset(&sent, signal);
        timespec const noTime{};
        while (sigtimedwait(&sent, nullptr, &noTime) == -1 && errno == EINTR) {
        }
    }

    sigset_t before;
};

} // namespace morvane::platform
