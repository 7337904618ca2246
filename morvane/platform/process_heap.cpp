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
#include <morvane/platform/laid_blocks.h>
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

LaidGap * heapGap() noexcept {
    static constinit LaidGap none;
    return &none;
}

void * heapLay(std::size_t) noexcept {
    return nullptr;
}

void heapFreeThree(void * first, void * second, void * third, LaidPage &) noexcept {
    std::free(first);
    std::free(second);
    std::free(third);
}

#else

void * heapAllocate(std::size_t bytes, bool zeroed) noexcept {
    return segmentAllocate(bytes, zeroed);
}

void heapFree(void * block) noexcept {
    segmentFree(block);
}

LaidGap * heapGap() noexcept {
    return segmentGap();
}

void * heapLay(std::size_t bytes) noexcept {
    return segmentLay(bytes);
}

void heapFreeThree(void * first, void * second, void * third, LaidPage & last) noexcept {
    segmentFreeThree(first, second, third, last);
}

#endif

} // namespace morvane::platform
