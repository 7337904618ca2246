// The upper floor of the process heap: small blocks, from pages that one thread owns.
//
// size class  blocks of one size: steps of 8 bytes up to 1 KB, from there eight steps to each doubling, up to 32 KB
// run         up to 64 neighbouring blocks of a page that the thread hands out one after the other, lowest address
// first
// laid blocks an object and its two buffers, one behind the other in a page of such
//
// A block has no header. A free one is a bit beside its page, so that taking and giving back touch no memory but the
// bits, and blocks come back in the order of their addresses whatever the order in which they were freed. Blocks that
// another thread frees are strung together on the heap that owns them, which takes them in when it next runs dry. The
// heap of a thread that has ended waits for a new thread; until one comes, others take over its pages with free blocks,
// one by one.
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <morvane/platform/heap_segment.h>
#include <morvane/platform/laid_blocks.h>

namespace morvane::platform {

inline constexpr std::size_t mostFineBytes = 1024;
inline constexpr std::size_t mostSmallBytes = 32768;
inline constexpr std::size_t fineClasses = mostFineBytes / 8 + 1;
inline constexpr std::size_t sizeClasses = fineClasses + 5 * 8;

/// What stands for the class in pages of laid blocks.
inline constexpr std::size_t laidClass = sizeClasses;

/// The class of the smallest blocks that hold `bytes` bytes, up to 1 KB. Class 0 is that of 0 bytes.
inline std::size_t fineClassOf(std::size_t bytes) noexcept {
    return (bytes + 7) / 8;
}

/// The same for more than 1 KB, up to `mostSmallBytes`.
inline std::size_t coarseClassOf(std::size_t bytes) noexcept {
    std::size_t const last = bytes - 1;
    auto const shift = static_cast<std::size_t>(std::bit_width(last)) - 4;
    return fineClasses + (shift - 7) * 8 + (last >> shift) - 8;
}

/// The bytes of a block of the class; those of a step for laid blocks.
constexpr std::size_t blockBytesOf(std::size_t sizeClass) noexcept {
    if (sizeClass == laidClass) {
        return laidStep;
    }
    if (sizeClass < fineClasses) {
        return sizeClass != 0 ? sizeClass * 8 : 8;
    }
    std::size_t const step = sizeClass - fineClasses;
    return (step % 8 + 9) << (step / 8 + 7);
}

/// Clears a block of at least `bytes` bytes, rounded up to a multiple of 8.
inline void clearBlock(void * block, std::size_t bytes) noexcept {
    char * const first = static_cast<char *>(block);
    char * const behind = first + (bytes + 7) / 8 * 8;
    if (bytes <= 8) {
        std::memset(first, 0, 8);
    } else if (bytes <= 16) {
        std::memset(first, 0, 16);
    } else if (bytes <= 32) {
        std::memset(first, 0, 16);
        std::memset(behind - 16, 0, 16);
    } else if (bytes <= 64) {
        std::memset(first, 0, 32);
        std::memset(behind - 32, 0, 32);
    } else {
        std::memset(first, 0, bytes);
    }
}

/// The small blocks of one thread.
class ThreadHeap {
public:
    constexpr ThreadHeap() { runs[laidClass].spare = this; }
    ThreadHeap(ThreadHeap const &) = delete;
    ~ThreadHeap() = default;

    ThreadHeap & operator=(ThreadHeap const &) = delete;

    /// A block of the size class, its first `bytes` bytes cleared when `zeroed`; null when the system refuses.
    void * allocate(std::size_t sizeClass, std::size_t bytes, bool zeroed) noexcept;

    /// The gap of the calling thread's heap; one without room when the system refuses it a heap.
    static LaidGap & currentGap() noexcept;

    /// Room for three blocks, one behind the other, uncleared; `bytes` is the sum of their `laidBytes`. Null when the
    /// system refuses.
    void * lay(std::size_t bytes) noexcept { return gap.fits(bytes) ? gap.lay(bytes) : laySlowly(bytes); }

    /// Takes a block of a page of this heap back.
    void free(HeapPage & page, void * block) noexcept;

    /// Does what is due with a page of laid blocks of which few are in use.
    void lookAtLaid(HeapPage & page) noexcept;

    /// Takes a block back that some other thread frees. Any thread may call it.
    void freeFromAfar(void * block) noexcept;

private:
    friend class IdleHeaps;

    struct Run {
        /// A bit for each block that is still to be handed out.
        std::uint64_t bits = 0;
        char * base = nullptr;
        /// The page that runs come from; null at first.
        HeapPage * page = nullptr;
        std::uint32_t blockBytes = 0;
        /// Whether the blocks are known to be zero.
        bool zeroed = false;
        /// A block that came back and is handed out next, so that one that replaces another takes its place; null when
        /// there is none. Its page counts it as used. Of laid blocks none is kept: there it is the heap itself.
        void * spare = nullptr;
    };

    struct PageList {
        HeapPage * first = nullptr;
        HeapPage * last = nullptr;
    };

    static ThreadHeap * begin() noexcept;
    void * allocateSlowly(std::size_t sizeClass, std::size_t bytes, bool zeroed) noexcept;
    void * laySlowly(std::size_t bytes) noexcept;
    bool refill(std::size_t sizeClass) noexcept;
    static bool openRun(Run & run, HeapPage & page) noexcept;
    HeapPage * nextPage(std::size_t sizeClass) noexcept;
    HeapPage * listedPage(std::size_t sizeClass) noexcept;
    HeapPage * makePage(std::size_t sizeClass, bool populate) noexcept;

    bool openGap(std::size_t bytes) noexcept;
    HeapPage & closeGap() noexcept;

    void putBack(HeapPage & page, void * block) noexcept;
    void freeSlowly(HeapPage & page, std::size_t word) noexcept;
    void enlist(HeapPage & page) noexcept;
    void unlist(HeapPage & page) noexcept;

    /// Takes in what other threads have freed.
    void takeRemote() noexcept;
    /// Puts the rest of every run back, so that all pages with free blocks stand in the lists.
    void closeRuns() noexcept;

    Run runs[sizeClasses + 1];
    PageList lists[sizeClasses + 1];
    LaidGap gap;
    /// Blocks that other threads have freed, each leading to the next by its first word.
    alignas(64) std::atomic<void *> remote{nullptr};
    /// Of all heaps, and of those without a thread.
    ThreadHeap * nextOfAll = nullptr;
    ThreadHeap * nextIdle = nullptr;
    /// The `threadNumber` of the thread that has it.
    std::uint32_t bearer = 0;
};

/// A heap without a page, which stands for that of a thread that has none yet.
extern ThreadHeap noHeap;

extern constinit thread_local ThreadHeap * currentHeap;

/// Gives all memory back to the system, with whatever blocks it holds. No other thread may be at work in the heap, then
/// or later.
void releaseHeap() noexcept;

/// Keep other threads from all that they share while the process is copied.
void lockHeap() noexcept;
void unlockHeap() noexcept;

inline void * ThreadHeap::allocate(std::size_t sizeClass, std::size_t bytes, bool zeroed) noexcept {
    Run & run = runs[sizeClass];
    if (void * const spare = run.spare; spare != nullptr) {
        run.spare = nullptr;
        if (zeroed) {
            clearBlock(spare, bytes);
        }
        return spare;
    }
    std::uint64_t const bits = run.bits;
    if (bits == 0) [[unlikely]] {
        return allocateSlowly(sizeClass, bytes, zeroed);
    }
    run.bits = bits & (bits - 1);
    char * const block = run.base + static_cast<std::size_t>(std::countr_zero(bits)) * run.blockBytes;
    if (zeroed && !run.zeroed) {
        clearBlock(block, bytes);
    }
    return block;
}

inline void ThreadHeap::free(HeapPage & page, void * block) noexcept {
    void *& spare = runs[page.sizeClass].spare;
    if (spare == nullptr) {
        spare = block;
    } else if (spare != block) {
        putBack(page, block);
    }
}

inline void ThreadHeap::putBack(HeapPage & page, void * block) noexcept {
    std::uint64_t const offset = reinterpret_cast<std::uintptr_t>(block) % sliceBytes;
    std::uint64_t const number = offset * page.reciprocal >> 32;
    std::uint64_t & word = page.freeBits[number / 64];
    std::uint64_t const before = word;
    std::uint64_t const after = before | std::uint64_t{1} << (number % 64);
    if (after == before) [[unlikely]] {
        return; // it was free
    }
    word = after;
    --page.usedBlocks;
    if (before == 0 || page.usedBlocks <= page.fewBlocks) [[unlikely]] {
        freeSlowly(page, static_cast<std::size_t>(number / 64));
    }
}

/// Blocks of any size, from the calling thread's heap or the segments.
inline void * segmentAllocate(std::size_t bytes, bool zeroed) noexcept {
    if (bytes <= mostFineBytes) [[likely]] {
        return currentHeap->allocate(fineClassOf(bytes), bytes, zeroed);
    }
    if (bytes <= mostSmallBytes) {
        return currentHeap->allocate(coarseClassOf(bytes), bytes, zeroed);
    }
    return acquireLarge(bytes, zeroed);
}

inline LaidGap * segmentGap() noexcept {
    return &ThreadHeap::currentGap();
}

/// Room for three blocks, as `ThreadHeap::lay` gives it.
inline void * segmentLay(std::size_t bytes) noexcept {
    return currentHeap->lay(bytes);
}

inline void segmentFree(void * block) noexcept {
    if (block == nullptr) {
        return;
    }
    HeapPage & page = pageOf(block);
    ThreadHeap * const owner = page.owner.load(std::memory_order_relaxed);
    if (owner == currentHeap) [[likely]] {
        owner->free(page, block);
    } else if (owner != nullptr) {
        owner->freeFromAfar(block);
    } else {
        releaseLarge(block);
    }
}

/// Does what is due with the page, of which few blocks are in use, and forgets it.
void segmentLookAt(LaidPage & last) noexcept;

/// What `segmentFreeThree` does with blocks that are not all in the last page.
void segmentFreeElsewhere(void * first, void * second, void * third, LaidPage & last) noexcept;

/// Takes back three blocks, none of them null. Those behind the first of what was laid in one go may have been replaced
/// by others that were not laid. `last` is the page of the call before.
inline void segmentFreeThree(void * first, void * second, void * third, LaidPage & last) noexcept {
    auto const place = reinterpret_cast<std::uintptr_t>(first);
    std::uintptr_t const apart = (place ^ last.place) | (place ^ reinterpret_cast<std::uintptr_t>(second))
                                 | (place ^ reinterpret_cast<std::uintptr_t>(third));
    if (apart < sliceBytes) [[likely]] {
        takeBackThree(*last.page, first);
        if (last.page->usedBlocks <= last.page->fewBlocks) [[unlikely]] {
            segmentLookAt(last);
        }
    } else {
        segmentFreeElsewhere(first, second, third, last);
    }
}

} // namespace morvane::platform
