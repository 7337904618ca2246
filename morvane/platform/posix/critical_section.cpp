#include <morvane/platform/critical_section_guard.h>

#include <cerrno>

#ifdef __linux__
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>
#else
#include <sched.h>
#endif

namespace morvane::platform {
namespace {

/// Looks at a lock that is held, before the thread goes to sleep: most are held for a few nanoseconds.
constexpr int spins = 100;

void pause() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__) || defined(__arm__)
    asm volatile("yield");
#endif
}

#ifdef __linux__

void sleepWhile(std::atomic<std::int32_t> & state, std::int32_t value) noexcept {
    static_assert(sizeof(state) == sizeof(std::int32_t));
    syscall(SYS_futex, &state, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void wakeOne(std::atomic<std::int32_t> & state) noexcept {
    syscall(SYS_futex, &state, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

#else

void sleepWhile(std::atomic<std::int32_t> &, std::int32_t) noexcept {
    sched_yield();
}

void wakeOne(std::atomic<std::int32_t> &) noexcept {}

#endif

} // namespace

void CriticalSectionGuard::wait(State & state) noexcept {
    for (int spin = 0; spin < spins; ++spin) {
        std::int32_t expected = 0;
        if (state.load(std::memory_order_relaxed) == 0
            && state.compare_exchange_weak(expected, 1, std::memory_order_acquire, std::memory_order_relaxed)) {
            return;
        }
        pause();
    }
    // The lock of a thread that has slept is marked 2 even if nobody else waits, which costs a needless wake at most.
    int const error = errno;
    while (state.exchange(2, std::memory_order_acquire) != 0) {
        sleepWhile(state, 2);
    }
    errno = error;
}

void CriticalSectionGuard::wake(State & state) noexcept {
    int const error = errno;
    wakeOne(state);
    errno = error;
}

} // namespace morvane::platform
