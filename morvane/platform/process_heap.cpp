#include <morvane/platform/process_heap.h>

// A sanitizer shall see every block.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MORVANE_SANITIZED_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(leak_sanitizer) || __has_feature(memory_sanitizer)               \
    || __has_feature(thread_sanitizer)
#define MORVANE_SANITIZED_HEAP 1
#endif
#endif

#ifdef MORVANE_SANITIZED_HEAP
#include <cstdlib>
#else
#include <morvane/platform/thread_heap.h>
#endif

namespace morvane::platform {
namespace {

constexpr char heapName = 0;

} // namespace

void * processHeap() noexcept {
    return const_cast<char *>(&heapName);
}

#ifdef MORVANE_SANITIZED_HEAP

void * heapAllocate(std::size_t bytes, bool zeroed) noexcept {
    std::size_t const count = bytes != 0 ? bytes : 1;
    return zeroed ? std::calloc(1, count) : std::malloc(count);
}

void heapFree(void * block) noexcept {
    std::free(block);
}

#else

void * heapAllocate(std::size_t bytes, bool zeroed) noexcept {
    return segmentAllocate(bytes, zeroed);
}

void heapFree(void * block) noexcept {
    segmentFree(block);
}

#endif

bool heapAllocateThree(std::size_t const (&bytes)[3], void * (&blocks)[3]) noexcept {
    for (std::size_t index = 0; index < 3; ++index) {
        blocks[index] = heapAllocate(bytes[index], false);
    }
    if (blocks[0] == nullptr || blocks[1] == nullptr || blocks[2] == nullptr) [[unlikely]] {
        heapFreeThree(blocks);
        return false;
    }
    return true;
}

void heapFreeThree(void * const (&blocks)[3]) noexcept {
    for (void * const block : blocks) {
        heapFree(block);
    }
}

} // namespace morvane::platform
