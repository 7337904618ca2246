// The counting face of the process heap.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/export.h>

namespace morvane {
class HeapBatch;
}

/// Hands out blocks of the process heap and counts the calls.
///
/// Use `globalProcessMemory` for a block that the report at unloading shall count; for many small blocks of few sizes
/// take `_MemoryManager`. Cost: a few nanoseconds up to 32 KB; larger blocks come from the system. Threads: any thread
/// may call it; the counts are exact with any number of threads. Assignment belongs to one thread. Ownership: a block
/// is the caller's from `heapAllocate` to `heapUnallocate`; the object itself holds none. All objects share one heap.
/// Errors: none is raised; a refused request gives null.
class MORVANE_EXPORT _Memory {
public:
    /// Takes the process heap; both counts are 0.
    _Memory();
    /// Copies the heap and both counts.
    _Memory(_Memory const & other);
    virtual ~_Memory();

    _Memory & operator=(_Memory const & other);

    /// A block of `size` bytes (0 gives a block too), aligned to 8, cleared when `zeroFill`; null when the system
    /// refuses. Counted either way.
    void * heapAllocate(std::uint32_t size, bool zeroFill);
    /// Takes a block back. Every call is counted, that with null too, which frees nothing.
    void heapUnallocate(void * pointer);

    /// Calls of `heapAllocate` and of `heapUnallocate` so far.
    std::int32_t heapAllocationCount() const;
    std::int32_t heapUnallocationCount() const;

    /// Always 0.
    std::uint32_t heapFree() const;

private:
    friend class morvane::HeapBatch;

    std::int32_t get_allocationCount() const;
    std::int32_t get_unallocationCount() const;
    void set_allocationCount(std::int32_t count);
    void set_unallocationCount(std::int32_t count);

    /// A share of the counts, in a cache line of its own. Each count is the sum of all shares. Most threads have one to
    /// themselves and write it plainly; the others share the first.
    struct Share {
        std::atomic<std::int32_t> allocationCount{0};
        std::atomic<std::int32_t> unallocationCount{0};
        char apart[64 - 2 * sizeof(std::atomic<std::int32_t>)];
    };
    static constexpr std::uint32_t shareCount = 8;

    void count(std::atomic<std::int32_t> Share::*calls, std::uint32_t number);

    void * heapHandle;
    Share shares[shareCount];
};
