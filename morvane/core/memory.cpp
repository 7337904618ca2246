#include <morvane/core/memory.h>

#include <morvane/platform/process_heap.h>
#include <morvane/platform/single_thread.h>

namespace {

void countCall(std::atomic<std::int32_t> & count) {
    if (morvane::platform::isSingleThreaded()) {
        auto const next = static_cast<std::uint32_t>(count.load(std::memory_order_relaxed)) + 1;
        count.store(static_cast<std::int32_t>(next), std::memory_order_relaxed);
    } else {
        count.fetch_add(1, std::memory_order_relaxed);
    }
}

} // namespace

_Memory::_Memory() : heapHandle(morvane::platform::processHeap()), allocationCount(0), unallocationCount(0) {}

_Memory::_Memory(_Memory const & other)
    : heapHandle(other.heapHandle), allocationCount(other.get_allocationCount()),
      unallocationCount(other.get_unallocationCount()) {}

_Memory::~_Memory() = default;

_Memory & _Memory::operator=(_Memory const & other) {
    heapHandle = other.heapHandle;
    set_allocationCount(other.get_allocationCount());
    set_unallocationCount(other.get_unallocationCount());
    return *this;
}

void * _Memory::heapAllocate(std::uint32_t size, bool zeroFill) {
    countCall(allocationCount);
    return morvane::platform::heapAllocate(size, zeroFill);
}

void _Memory::heapUnallocate(void * pointer) {
    countCall(unallocationCount);
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
    return allocationCount.load(std::memory_order_relaxed);
}

std::int32_t _Memory::get_unallocationCount() const {
    return unallocationCount.load(std::memory_order_relaxed);
}

void _Memory::set_allocationCount(std::int32_t count) {
    allocationCount.store(count, std::memory_order_relaxed);
}

void _Memory::set_unallocationCount(std::int32_t count) {
    unallocationCount.store(count, std::memory_order_relaxed);
}
