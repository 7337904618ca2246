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

/// Three blocks at once, uncleared, each as `heapAllocate` gives it; false, with none taken, when the system refuses
/// one.
bool heapAllocateThree(std::size_t const (&bytes)[3], void * (&blocks)[3]) noexcept;

/// Takes three blocks back, each as `heapFree` does.
void heapFreeThree(void * const (&blocks)[3]) noexcept;

/// 1 to `mostThreadNumber` on a thread that has allocated, as long as it bears the number alone, 0 on any other. What a
/// thread wrote under its number is seen by the thread that bears it next.
inline constexpr std::uint32_t mostThreadNumber = 7;
extern constinit thread_local std::uint32_t threadNumber;

} // namespace morvane::platform
