// Memory straight from the system, in whole pages.
#pragma once

#include <cstddef>

namespace morvane::platform {

/// Zeroed memory of `bytes` bytes that begins at a multiple of `alignment`, a power of two; null when the system
/// refuses. `bytes` is a multiple of 64 KB or less than that. Memory that is never touched costs addresses only.
void * mapPages(std::size_t bytes, std::size_t alignment) noexcept;

/// Gives memory of `mapPages` back, all of it.
void unmapPages(void * pages, std::size_t bytes) noexcept;

/// Gives the memory back but keeps the addresses: it reads as zeros then. False when that could not be done, and the
/// contents may stand.
bool discardPages(void * pages, std::size_t bytes) noexcept;

/// Hints: all of this is about to be touched, so fetch it in one go; this is large and lives long, so map it in large
/// pages.
void populatePages(void * pages, std::size_t bytes) noexcept;
void preferLargePages(void * pages, std::size_t bytes) noexcept;

} // namespace morvane::platform
