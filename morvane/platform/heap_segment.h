// The floor of the process heap: segments of memory from the system, cut into slices.
//
// - slice: 64 KB, at a multiple of 64 KB
// - segment: 64 slices, at a multiple of its own size of 4 MB, so that any address leads to its segment by a mask; the
//   first slice is its head
// - page: one slice that is cut into blocks of one size; a thread heap owns it
// - span: one or more slices that make one large block
// - huge block: a block that has a segment, longer than others, to itself
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace morvane::platform {

class ThreadHeap;

inline constexpr std::size_t sliceBytes = std::size_t{1} << 16;
inline constexpr std::size_t segmentSlices = 64;
inline constexpr std::size_t segmentBytes = sliceBytes * segmentSlices;

/// The slices that one large block may have in a segment that it shares with others.
inline constexpr std::size_t mostSpanSlices = 32;

/// Blocks of one page at most: 64 words of free bits, each with its bit in one more word.
inline constexpr std::size_t mostPageBlocks = 4096;

/// What the head of a segment holds for one slice. Of a span only the entry of its first slice is in use.
struct alignas(64) HeapPage {
    /// The heap whose thread alone touches all that follows; null unless the slice is a page.
    std::atomic<ThreadHeap *> owner;
    /// A bit for each word of `freeBits` that is not 0.
    std::uint64_t freeWords;
    /// 2 to the 32 divided by the bytes of a block, rounded up: an offset times this, without its lower 32 bits, is the
    /// number of a block.
    std::uint32_t reciprocal;
    /// Blocks that are with the program, or in the run that the owner hands out.
    std::uint32_t usedBlocks;
    /// When no more than so many are, the page may have to be listed or given back.
    std::uint32_t fewBlocks;
    std::uint16_t blockBytes;
    /// Blocks that fit, and those of them that were ever handed out, which are the first ones.
    std::uint16_t capacity;
    std::uint16_t openedBlocks;
    std::uint8_t sizeClass;
    /// The slices of a span; 0 in a page and a free slice.
    std::uint8_t spanSlices;
    /// Whether the blocks never handed out are known to be zero.
    bool zeroed;
    /// Whether it stands in the owner's list of pages with free blocks.
    bool listed;
    HeapPage * next;
    HeapPage * previous;
    /// A bit for each block that came back.
    std::uint64_t freeBits[mostPageBlocks / 64];
};

/// The head of a segment; the entries of its slices follow.
struct alignas(64) HeapSegment {
    HeapSegment * next;
    HeapSegment * previous;
    HeapSegment * nextOfAll;
    HeapSegment * previousOfAll;
    /// Bits for slices: free ones; those that may hold other bytes than zeros; those that were free when the last
    /// period ended, and since.
    std::uint64_t freeSlices;
    std::uint64_t dirtySlices;
    std::uint64_t idleSlices;
    /// Bytes of the map: `segmentBytes`, but for a huge block.
    std::size_t mappedBytes;
    bool huge;
    /// Slices of the longest run of free ones.
    std::uint32_t longestRun;
};

/// Entries of neighbouring segments lie a cache line further on, so that those of all segments do not share the few
/// places of a cache that addresses 4 MB apart compete for.
inline constexpr std::size_t entryShifts = 8;

static_assert(sizeof(HeapSegment) + entryShifts * 64 + segmentSlices * sizeof(HeapPage) <= sliceBytes);

inline HeapSegment & segmentOf(void const * address) noexcept {
    return *reinterpret_cast<HeapSegment *>(reinterpret_cast<std::uintptr_t>(address)
                                            & ~(std::uintptr_t{segmentBytes} - 1));
}

inline std::size_t sliceNumber(void const * address) noexcept {
    return (reinterpret_cast<std::uintptr_t>(address) / sliceBytes) % segmentSlices;
}

/// The entries of the segment's slices.
inline HeapPage * pagesOf(HeapSegment & segment) noexcept {
    std::size_t const shift = reinterpret_cast<std::uintptr_t>(&segment) / segmentBytes % entryShifts * 64;
    return reinterpret_cast<HeapPage *>(reinterpret_cast<char *>(&segment + 1) + shift);
}

inline HeapPage & pageOf(void const * address) noexcept {
    return pagesOf(segmentOf(address))[sliceNumber(address)];
}

/// The first byte behind the head of the page's slice entry: where its blocks lie.
inline char * blocksOf(HeapPage const & page) noexcept {
    HeapSegment & segment = segmentOf(&page);
    return reinterpret_cast<char *>(&segment) + static_cast<std::size_t>(&page - pagesOf(segment)) * sliceBytes;
}

/// A slice for a page, whose entry tells `zeroed` and is else to be filled; null when the system refuses. `populate`:
/// all of it is about to be used.
HeapPage * acquirePage(bool populate) noexcept;

/// Takes back a slice that was a page, when all its blocks are free.
void releasePage(HeapPage & page) noexcept;

/// A block too large for a page, at a multiple of 64 bytes; cleared when `zeroed`; null when the system refuses.
void * acquireLarge(std::size_t bytes, bool zeroed) noexcept;

/// Takes back a block of `acquireLarge`.
void releaseLarge(void * block) noexcept;

/// Gives all segments back to the system, with whatever blocks they hold.
void releaseSegments() noexcept;

/// Bytes that the heap holds from the system, for blocks or for later.
std::size_t mappedHeapBytes() noexcept;

/// Tells what the clock says, `tickCount`: memory that has lain idle for some ten seconds goes back to the system.
/// Calls that take or give back slices look at the clock themselves now and then.
void passTime(std::uint32_t milliseconds) noexcept;

/// Keeps other threads out of the segments while the process is copied.
void lockSegments() noexcept;
void unlockSegments() noexcept;

} // namespace morvane::platform
