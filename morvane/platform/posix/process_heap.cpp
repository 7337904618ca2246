#include <morvane/platform/process_heap.h>

#include <cstdlib>

namespace morvane::platform {

void * processHeap() noexcept {
    static char name;
    return &name;
}

void * heapAllocate(std::size_t bytes, bool zeroed) noexcept {
    return zeroed ? std::calloc(1, bytes != 0 ? bytes : 1) : std::malloc(bytes != 0 ? bytes : 1);
}

void heapFree(void * block) noexcept {
    std::free(block);
}

} // namespace morvane::platform
