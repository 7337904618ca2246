// The ordinary allocator of a test program, which counts its blocks and refuses on demand.
#pragma once

#include <atomic>
#include <cstddef>

namespace ordinary_allocator {

/// Blocks that `new` gave and `delete` has not taken back.
extern std::atomic<long> liveBlocks;

/// Requests of all forms since the program began.
extern std::atomic<long> requests;

/// How many more requests of the form that gives null are served; below 0 all are.
extern std::atomic<long> servedBeforeRefusal;

/// Refuses the request after the next `served` ones, whether it gives null or throws, and, where it `goesOn`, all
/// others until `serveAll`.
void refuse(long served, bool goesOn);
/// Refuses every request of more than `bytes` in the same way.
void refuseAbove(std::size_t bytes);
void serveAll();

} // namespace ordinary_allocator
