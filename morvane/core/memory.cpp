#include <morvane/core/memory.h>

#include <algorithm>
#include <cstdint>
#include <morvane/core/checks.h>
#include <morvane/core/heap_batch.h>
#include <morvane/core/lifecycle.h>
#include <morvane/platform/process_heap.h>
#include <morvane/platform/single_thread.h>

inline void _Memory::count(std::atomic<std::int32_t> Share::*calls, std::uint32_t number) {
    static_assert(shareCount == morvane::platform::mostThreadNumber + 1);
    morvane::checkLibraryIsUp();
    std::uint32_t const thread = morvane::platform::threadNumber;
    std::atomic<std::int32_t> & count = shares[thread].*calls;
    if (thread != 0 || morvane::platform::isSingleThreaded()) {
        auto const next = static_cast<std::uint32_t>(count.load(std::memory_order_relaxed)) + number;
        count.store(static_cast<std::int32_t>(next), std::memory_order_relaxed);
    } else {
        count.fetch_add(static_cast<std::int32_t>(number), std::memory_order_relaxed);
    }
}

_Memory::_Memory() : heapHandle(morvane::platform::processHeap()) {}

_Memory::_Memory(_Memory const & other) : heapHandle(other.heapHandle) {
    set_allocationCount(other.get_allocationCount());
    set_unallocationCount(other.get_unallocationCount());
}

_Memory::~_Memory() = default;

_Memory & _Memory::operator=(_Memory const & other) {
    heapHandle = other.heapHandle;
    set_allocationCount(other.get_allocationCount());
    set_unallocationCount(other.get_unallocationCount());
    return *this;
}

void * _Memory::heapAllocate(std::uint32_t size, bool zeroFill) {
    count(&Share::allocationCount, 1);
    return morvane::platform::heapAllocate(size, zeroFill);
}

void _Memory::heapUnallocate(void * pointer) {
    count(&Share::unallocationCount, 1);
    morvane::platform::heapFree(pointer);
}

std::int32_t _Memory::heapAllocationCount() const {
    return get_allocationCount();
}

std::int32_t _Memory::heapUnallocationCount() const {
    return get_unallocationCount();
}

std::uint32_t _Memory::heapFree() const {
    return 0;
}

std::int32_t _Memory::get_allocationCount() const {
    std::uint32_t sum = 0;
    for (Share const & share : shares) {
        sum += static_cast<std::uint32_t>(share.allocationCount.load(std::memory_order_relaxed));
    }
    return static_cast<std::int32_t>(sum);
}

std::int32_t _Memory::get_unallocationCount() const {
    std::uint32_t sum = 0;
    for (Share const & share : shares) {
        sum += static_cast<std::uint32_t>(share.unallocationCount.load(std::memory_order_relaxed));
    }
    return static_cast<std::int32_t>(sum);
}

void _Memory::set_allocationCount(std::int32_t count) {
    for (Share & share : shares) {
        share.allocationCount.store(&share == shares ? count : 0, std::memory_order_relaxed);
    }
}

void _Memory::set_unallocationCount(std::int32_t count) {
    for (Share & share : shares) {
        share.unallocationCount.store(&share == shares ? count : 0, std::memory_order_relaxed);
    }
}

morvane::HeapBatch::HeapBatch() noexcept {
    static constinit platform::LaidGap none;
    gap = globalProcessMemory != nullptr ? platform::heapGap() : &none;
}

char * morvane::HeapBatch::laySlowly(std::size_t bytes) noexcept {
    return static_cast<char *>(globalProcessMemory != nullptr ? platform::heapLay(bytes) : nullptr);
}

morvane::HeapBatch::Blocks morvane::HeapBatch::takeApart(std::size_t objectBytes, std::size_t firstBytes,
                                                         std::size_t secondBytes) noexcept {
    if (globalProcessMemory == nullptr || std::max(firstBytes, secondBytes) > UINT32_MAX) {
        return {};
    }
    taken += 2;
    Blocks const blocks{platform::heapAllocate(objectBytes, false), platform::heapAllocate(firstBytes, false),
                        platform::heapAllocate(secondBytes, false)};
    if (blocks.object != nullptr && blocks.first != nullptr && blocks.second != nullptr) {
        return blocks;
    }
    givenBack += 2;
    for (void * const block : {blocks.object, blocks.first, blocks.second}) {
        platform::heapFree(block);
    }
    return {};
}

void morvane::HeapBatch::settleCounts() noexcept {
    if (_Memory * const memory = globalProcessMemory) {
        memory->count(&_Memory::Share::allocationCount, taken);
        memory->count(&_Memory::Share::unallocationCount, givenBack);
    }
    taken = 0;
    givenBack = 0;
}
