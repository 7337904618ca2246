// What the copies of a pool share.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/core/memory_block.h>
#include <morvane/platform/critical_section.h>

namespace morvane {

/// The chain of nodes of a pool, its lock, and the number of pools that share it.
class MemoryChain {
public:
    using Node = _MemoryBlock::_MemoryNode;

    /// A chain without a node, for one sharer; null when there is no memory.
    static MemoryChain * create() noexcept;
    /// Gives the memory of the chain back, not that of its nodes.
    static void destroy(MemoryChain * chain) noexcept;

    _RTL_CRITICAL_SECTION protect;
    std::atomic<std::uint32_t> sharers{1};
    Node * first = nullptr;
};

} // namespace morvane
