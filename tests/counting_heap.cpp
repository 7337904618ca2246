#include "counting_heap.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <morvane/platform/laid_blocks.h>
#include <morvane/platform/process_heap.h>

namespace counting_heap {
namespace {

constinit std::atomic<long> live{0};
constinit std::atomic<long> asked{0};
constinit std::atomic<std::size_t> bytesAskedLast{0};
/// Requests still to be served before one is refused; below 0 all are served.
constinit std::atomic<long> servedBefore{-1};
constinit std::atomic<bool> refusesOn{false};
constinit std::atomic<std::size_t> mostBytes{std::numeric_limits<std::size_t>::max()};

bool refuses() {
    long left = servedBefore.load();
    while (left > 0 && !servedBefore.compare_exchange_weak(left, left - 1)) {
    }
    if (left == 0 && !refusesOn) {
        servedBefore = -1;
    }
    return left == 0;
}

/// What is still live when the program ends was leaked by a test or by the library itself.
[[gnu::destructor(101)]] void failOnLeaks() {
    if (live != 0) {
        std::fprintf(stderr, "counting heap: %ld blocks were never given back\n", live.load());
        std::_Exit(EXIT_FAILURE);
    }
}

} // namespace

long liveBlocks() {
    return live;
}

long requests() {
    return asked;
}

std::size_t lastBytes() {
    return bytesAskedLast;
}

void refuseAfter(long served) {
    refusesOn = true;
    servedBefore = served;
}

void refuseOnce(long served) {
    refusesOn = false;
    servedBefore = served;
}

void refuseAbove(std::size_t bytes) {
    mostBytes = bytes;
}

void serveAll() {
    servedBefore = -1;
    mostBytes = std::numeric_limits<std::size_t>::max();
}

LeakCheck::LeakCheck() : liveAtFirst(liveBlocks()) {}

LeakCheck::~LeakCheck() {
    serveAll();
    EXPECT_EQ(liveBlocks(), liveAtFirst) << "blocks of the process heap leaked";
}

} // namespace counting_heap

namespace morvane::platform {

void * processHeap() noexcept {
    static char name;
    return &name;
}

void * heapAllocate(std::size_t bytes, bool zeroed) noexcept {
    ++counting_heap::asked;
    counting_heap::bytesAskedLast = bytes;
    if (counting_heap::refuses() || bytes > counting_heap::mostBytes) {
        return nullptr;
    }
    std::size_t const count = bytes != 0 ? bytes : 1;
    void * const block = std::malloc(count);
    if (block != nullptr) {
        // Whoever reads what was not cleared shall not find zeros by luck.
        std::memset(block, zeroed ? 0 : 0xA5, count);
        ++counting_heap::live;
    }
    return block;
}

void heapFree(void * block) noexcept {
    counting_heap::live -= block != nullptr ? 1 : 0;
    std::free(block);
}

LaidGap * heapGap() noexcept {
    static LaidGap none;
    return &none;
}

void * heapLay(std::size_t) noexcept {
    return nullptr; // each block is asked for
}

void heapFreeThree(void * first, void * second, void * third, LaidPage &) noexcept {
    for (void * const block : {first, second, third}) {
        heapFree(block);
    }
}

} // namespace morvane::platform
