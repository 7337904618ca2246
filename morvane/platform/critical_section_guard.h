// Holds a lock for one scope, without a call where nobody waits.
#pragma once

#include <morvane/platform/critical_section.h>
#include <morvane/platform/single_thread.h>

namespace morvane::platform {

/// Enters the lock when made and leaves it when it goes.
class CriticalSectionGuard {
public:
    explicit CriticalSectionGuard(_RTL_CRITICAL_SECTION & section) noexcept : held(section) { enter(held.state); }

    CriticalSectionGuard(CriticalSectionGuard const &) = delete;

    ~CriticalSectionGuard() { leave(held.state); }

    CriticalSectionGuard & operator=(CriticalSectionGuard const &) = delete;

private:
    friend struct ::_RTL_CRITICAL_SECTION;

    using State = std::atomic<std::int32_t>;

    // A lone thread marks the lock with plain stores all the same: a thread that it starts before it leaves then finds
    // the lock held, and leaving sees that there are two and wakes whoever waits.
    static void enter(State & state) noexcept {
        if (isSingleThreaded()) {
            state.store(1, std::memory_order_relaxed);
            return;
        }
        std::int32_t expected = 0;
        if (!state.compare_exchange_strong(expected, 1, std::memory_order_acquire, std::memory_order_relaxed))
            [[unlikely]] {
            wait(state);
        }
    }

    static void leave(State & state) noexcept {
        if (isSingleThreaded()) {
            state.store(0, std::memory_order_relaxed);
            return;
        }
        if (state.exchange(0, std::memory_order_release) == 2) [[unlikely]] {
            wake(state);
        }
    }

    /// Comes back when the calling thread holds the lock, which another one held a moment ago.
    static void wait(State & state) noexcept;
    /// Wakes one thread that waits, if there is one.
    static void wake(State & state) noexcept;

    _RTL_CRITICAL_SECTION & held;
};

} // namespace morvane::platform
