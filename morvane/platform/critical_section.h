// The lock that the pools hold.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/export.h>

/// A mutual exclusion lock; not recursive, not copyable.
///
/// Cost: one atomic instruction to enter and one to leave where nobody waits, none in a process of one thread.
/// Threads: any thread may enter; the one that entered leaves.
struct MORVANE_EXPORT _RTL_CRITICAL_SECTION {
public:
    _RTL_CRITICAL_SECTION() noexcept;
    _RTL_CRITICAL_SECTION(_RTL_CRITICAL_SECTION const &) = delete;
    ~_RTL_CRITICAL_SECTION();

    _RTL_CRITICAL_SECTION & operator=(_RTL_CRITICAL_SECTION const &) = delete;

    /// Waits until no other thread holds the lock, then holds it.
    void enter() noexcept;
    /// Lets go of the lock.
    void leave() noexcept;

private:
    std::atomic<std::int32_t> state;
};
