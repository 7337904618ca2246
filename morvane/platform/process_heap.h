// The one heap of the process, under all text buffers, nodes and lists.
#pragma once

#include <cstddef>
#include <cstdint>

namespace morvane::platform {

/// What names the process heap; never null.
void * processHeap() noexcept;

/// A block of at least `bytes` bytes (0 counts as 1), aligned to 8, and to 16 where `bytes` is a multiple of 16;
/// cleared when `zeroed`; null when the system refuses. Blocks that are asked for one after the other mostly lie one
/// after the other. Any thread may call it.
void * heapAllocate(std::size_t bytes, bool zeroed) noexcept;

/// Takes a block back, on any thread. Null is ignored.
void heapFree(void * block) noexcept;

class LaidGap;
struct HeapPage;

/// Of three blocks that are laid one behind the other, each begins at a multiple of the step. The second and third have
/// fewer bytes than the limit, a power of two, and the first not many more than a node.
inline constexpr std::size_t laidStep = 16;
inline constexpr std::size_t laidBytesLimit = 1024;
constexpr std::size_t laidBytes(std::size_t bytes) noexcept {
    return (bytes + laidStep - 1) / laidStep * laidStep;
}

/// Where the calling thread lays blocks; never null. One without room stands in while the system refuses it a heap.
LaidGap * heapGap() noexcept;

/// Room for three blocks where the gap has not enough, uncleared, each of which is the caller's as if it were from
/// `heapAllocate`; `bytes` is the sum of their `laidBytes`, none of them 0. Null when the system refuses, and where
/// blocks are always kept apart.
void * heapLay(std::size_t bytes) noexcept;

/// A page that three blocks went back to, and their place in it. It holds as long as its thread does nothing else with
/// the heap than to give back more of them.
struct LaidPage {
    HeapPage * page = nullptr;
    std::uintptr_t place = 0;
};

/// Takes three blocks back, none of them null, on any thread: at little cost those of `heapLay` in their order. The
/// second and third of these may have been replaced by blocks of `heapAllocate`. `last` is that of the call before, or
/// new.
void heapFreeThree(void * first, void * second, void * third, LaidPage & last) noexcept;

/// 1 to `mostThreadNumber` on a thread that has allocated, as long as it bears the number alone, 0 on any other. What a
/// thread wrote under its number is seen by the thread that bears it next.
inline constexpr std::uint32_t mostThreadNumber = 7;
extern constinit thread_local std::uint32_t threadNumber;

} // namespace morvane::platform
