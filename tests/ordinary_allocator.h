// The ordinary allocator of a test program, which counts its blocks and refuses on demand.
#pragma once

#include <atomic>

namespace ordinary_allocator {

/// Blocks that `new` gave and `delete` has not taken back.
extern std::atomic<long> liveBlocks;

/// How many more requests of the form that gives null are served; below 0 all are.
extern std::atomic<long> servedBeforeRefusal;

} // namespace ordinary_allocator
