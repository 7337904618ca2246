// The lock that the pools hold.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/export.h>

namespace morvane::platform {
class CriticalSectionGuard;
}

/// A mutual exclusion lock; not recursive, not copyable. It needs no clean-up, and one in static storage is ready
/// before any constructor runs.
///
/// Cost: one atomic instruction to enter and one to leave where nobody waits, none in a process of one thread.
/// Threads: any thread may enter; the one that entered leaves.
struct MORVANE_EXPORT _RTL_CRITICAL_SECTION {
public:
    constexpr _RTL_CRITICAL_SECTION() noexcept = default;
    _RTL_CRITICAL_SECTION(_RTL_CRITICAL_SECTION const &) = delete;
    ~_RTL_CRITICAL_SECTION() = default;

    _RTL_CRITICAL_SECTION & operator=(_RTL_CRITICAL_SECTION const &) = delete;

    /// Waits until no other thread holds the lock, then holds it.
    void enter() noexcept;
    /// Lets go of the lock.
    void leave() noexcept;

private:
    friend class morvane::platform::CriticalSectionGuard;

    /// 0: free; 1: held; 2: held, and another thread may wait.
    std::atomic<std::int32_t> state{0};
};
