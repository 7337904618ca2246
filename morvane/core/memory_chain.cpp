#include <morvane/core/memory_chain.h>

#include <morvane/platform/process_heap.h>
#include <new>

namespace morvane {

MemoryChain * MemoryChain::create() noexcept {
    void * const block = platform::heapAllocate(sizeof(MemoryChain), false);
    return block != nullptr ? new (block) MemoryChain : nullptr;
}

void MemoryChain::destroy(MemoryChain * chain) noexcept {
    if (chain != nullptr) {
        chain->~MemoryChain();
        platform::heapFree(chain);
    }
}

} // namespace morvane
