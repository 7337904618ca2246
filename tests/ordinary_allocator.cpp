#include "ordinary_allocator.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace ordinary_allocator {

constinit std::atomic<long> liveBlocks{0};
constinit std::atomic<long> requests{0};
constinit std::atomic<long> servedBeforeRefusal{-1};

namespace {

/// The numbers of the first request that is refused and of the first one that is served again.
constinit std::atomic<long> firstRefused{0};
constinit std::atomic<long> firstServed{0};
constinit std::atomic<std::size_t> mostBytes{std::numeric_limits<std::size_t>::max()};

void * allocate(std::size_t bytes) {
    long const number = requests++;
    if ((number >= firstRefused && number < firstServed) || bytes > mostBytes) {
        return nullptr;
    }
    void * const block = std::malloc(bytes != 0 ? bytes : 1);
    liveBlocks += block != nullptr ? 1 : 0;
    return block;
}

void * allocateOrThrow(std::size_t bytes) {
    void * const block = allocate(bytes);
    return block != nullptr ? block : throw std::bad_alloc();
}

void * allocateOrRefuse(std::size_t bytes) {
    if (servedBeforeRefusal == 0) {
        return nullptr;
    }
    servedBeforeRefusal -= servedBeforeRefusal > 0 ? 1 : 0;
    return allocate(bytes);
}

void release(void * block) {
    liveBlocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

} // namespace

void refuse(long served, bool goesOn) {
    firstRefused = requests + served;
    firstServed = goesOn ? std::numeric_limits<long>::max() : firstRefused + 1;
}

void refuseAbove(std::size_t bytes) {
    mostBytes = bytes;
}

void serveAll() {
    firstServed = 0;
    mostBytes = std::numeric_limits<std::size_t>::max();
}

} // namespace ordinary_allocator

void * operator new(std::size_t bytes) {
    return ordinary_allocator::allocateOrThrow(bytes);
}

void * operator new[](std::size_t bytes) {
    return ordinary_allocator::allocateOrThrow(bytes);
}

void * operator new(std::size_t bytes, std::nothrow_t const &) noexcept {
    return ordinary_allocator::allocateOrRefuse(bytes);
}

void * operator new[](std::size_t bytes, std::nothrow_t const &) noexcept {
    return ordinary_allocator::allocateOrRefuse(bytes);
}

void operator delete(void * block) noexcept {
    ordinary_allocator::release(block);
}

void operator delete[](void * block) noexcept {
    ordinary_allocator::release(block);
}

void operator delete(void * block, std::size_t) noexcept {
    ordinary_allocator::release(block);
}

void operator delete[](void * block, std::size_t) noexcept {
    ordinary_allocator::release(block);
}
