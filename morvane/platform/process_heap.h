// The one heap of the process, under all text buffers, nodes and lists.
#pragma once

#include <cstddef>

namespace morvane::platform {

/// A block of at least `bytes` bytes (0 counts as 1), aligned to 8, or to 16 from 16 bytes on; cleared when `zeroed`; null when the system refuses.
/// Any thread may call it.
void * heapAllocate(std::size_t bytes, bool zeroed) noexcept;

/// Takes a block back, on any thread. Null is ignored.
void heapFree(void * block) noexcept;

} // namespace morvane::platform
