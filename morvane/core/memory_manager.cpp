#include <morvane/core/memory_manager.h>

#include <algorithm>
#include <bit>
#include <iterator>
#include <limits>
#include <morvane/core/memory_block_inline.h>
#include <morvane/platform/critical_section_guard.h>
#include <new>

namespace {

/// In the unit size of the header of a block that came from the heap.
constexpr std::uint16_t heapMark = 65535;

constexpr std::uint32_t mostUnits = 65536;

/// Held while managers join or leave those that share their pools.
constinit _RTL_CRITICAL_SECTION sharing;

_MemoryBlock * createPool(std::uint16_t unitSize, std::uint32_t size) {
    return new (std::nothrow) _MemoryBlock(unitSize, std::clamp(size / unitSize, 1U, mostUnits));
}

constexpr std::uint32_t leastUnitSize = 16;
constexpr std::uint32_t mostUnitSize = 1024;

/// The place of the first pool whose units hold `size` bytes, up to `mostUnitSize`.
constexpr std::size_t poolOfSize(std::uint32_t size) {
    std::uint32_t const last = size - (size != 0 ? 1 : 0);
    return static_cast<std::size_t>(std::bit_width(last | (leastUnitSize - 1)) - std::bit_width(leastUnitSize - 1));
}

} // namespace

constinit _MemoryBlock * _MemoryManager::*const _MemoryManager::pools[7]{
    &_MemoryManager::memoryBlock16,  &_MemoryManager::memoryBlock32,  &_MemoryManager::memoryBlock64,
    &_MemoryManager::memoryBlock128, &_MemoryManager::memoryBlock256, &_MemoryManager::memoryBlock512,
    &_MemoryManager::memoryBlock1024};

_MemoryManager::_MemoryManager(std::uint32_t size) : nextSharer(this), previousSharer(this) {
    createPools(size);
}

_MemoryManager::_MemoryManager(_MemoryManager const & other) : memoryAllocator(other.memoryAllocator) {
    sharePools(other);
}

_MemoryManager::~_MemoryManager() {
    leavePools();
}

_MemoryManager & _MemoryManager::operator=(_MemoryManager const & other) {
    if (this != &other) {
        leavePools();
        memoryAllocator = other.memoryAllocator;
        sharePools(other);
    }
    return *this;
}

void _MemoryManager::default_ctor_closure() {
    leavePools();
    memoryAllocator = _Memory();
    nextSharer = this;
    previousSharer = this;
    createPools(defaultNodeBytes);
}

void * _MemoryManager::fastAllocate(std::uint32_t size, bool zeroFill) {
    if (size <= mostUnitSize) {
        _MemoryBlock * const pool = this->*pools[poolOfSize(size)];
        return pool != nullptr ? pool->allocateUnit(zeroFill) : nullptr;
    }
    if (size > std::numeric_limits<std::uint32_t>::max() - morvane::partHeaderBytes) {
        return nullptr;
    }
    void * const block = memoryAllocator.heapAllocate(size + morvane::partHeaderBytes, zeroFill);
    if (block == nullptr) {
        return nullptr;
    }
    return _MemoryBlock::memoryPartToPointer(new (block) _MemoryBlock::_MemoryPart{0, heapMark, size});
}

void _MemoryManager::fastUnallocate(void * pointer) {
    if (pointer == nullptr) {
        return;
    }
    auto * const part =
        reinterpret_cast<_MemoryBlock::_MemoryPart *>(static_cast<char *>(pointer) - morvane::partHeaderBytes);
    std::uint32_t const unitSize = part->unitSize;
    std::size_t const place = poolOfSize(unitSize);
    if (place < std::size(pools) && unitSize == leastUnitSize << place) [[likely]] {
        if (_MemoryBlock * const pool = this->*pools[place]; pool != nullptr) [[likely]] {
            pool->unallocateHeaded(part);
        }
    } else if (unitSize == heapMark) {
        memoryAllocator.heapUnallocate(part);
    } else if constexpr (morvane::isChecked) {
        using namespace morvane::literals;
        morvane::stopForMisuse(u"misuse: a pointer was released that no pool has given out\r\n"_w);
    }
}

void * _MemoryManager::heapAllocate(std::uint32_t size, bool zeroFill) {
    return memoryAllocator.heapAllocate(size, zeroFill);
}

void _MemoryManager::heapUnallocate(void * pointer) {
    memoryAllocator.heapUnallocate(pointer);
}

std::uint32_t _MemoryManager::heapFree() const {
    return memoryAllocator.heapFree();
}

void _MemoryManager::traceConsole() const {
    for (_MemoryBlock * _MemoryManager::*const field : pools) {
        if (_MemoryBlock const * const pool = this->*field; pool != nullptr) {
            pool->traceConsole();
        }
    }
}

_Memory _MemoryManager::get_memoryAllocator() const {
    return memoryAllocator;
}

_MemoryBlock * _MemoryManager::get_memoryBlock16() const {
    return memoryBlock16;
}

_MemoryBlock * _MemoryManager::get_memoryBlock32() const {
    return memoryBlock32;
}

_MemoryBlock * _MemoryManager::get_memoryBlock64() const {
    return memoryBlock64;
}

_MemoryBlock * _MemoryManager::get_memoryBlock128() const {
    return memoryBlock128;
}

_MemoryBlock * _MemoryManager::get_memoryBlock256() const {
    return memoryBlock256;
}

_MemoryBlock * _MemoryManager::get_memoryBlock512() const {
    return memoryBlock512;
}

_MemoryBlock * _MemoryManager::get_memoryBlock1024() const {
    return memoryBlock1024;
}

void _MemoryManager::set_memoryAllocator(_Memory memory) {
    memoryAllocator = memory;
}

void _MemoryManager::set_memoryBlock16(_MemoryBlock * block) {
    memoryBlock16 = block;
}

void _MemoryManager::set_memoryBlock32(_MemoryBlock * block) {
    memoryBlock32 = block;
}

void _MemoryManager::set_memoryBlock64(_MemoryBlock * block) {
    memoryBlock64 = block;
}

void _MemoryManager::set_memoryBlock128(_MemoryBlock * block) {
    memoryBlock128 = block;
}

void _MemoryManager::set_memoryBlock256(_MemoryBlock * block) {
    memoryBlock256 = block;
}

void _MemoryManager::set_memoryBlock512(_MemoryBlock * block) {
    memoryBlock512 = block;
}

void _MemoryManager::set_memoryBlock1024(_MemoryBlock * block) {
    memoryBlock1024 = block;
}

void _MemoryManager::createPools(std::uint32_t size) {
    for (std::uint32_t unitSize = leastUnitSize; unitSize <= mostUnitSize; unitSize *= 2) {
        this->*pools[poolOfSize(unitSize)] = createPool(static_cast<std::uint16_t>(unitSize), size);
    }
}

void _MemoryManager::sharePools(_MemoryManager const & other) {
    for (_MemoryBlock * _MemoryManager::*const field : pools) {
        this->*field = other.*field;
    }
    morvane::platform::CriticalSectionGuard const guard(sharing);
    nextSharer = other.nextSharer;
    previousSharer = &other;
    nextSharer->previousSharer = this;
    other.nextSharer = this;
}

void _MemoryManager::leavePools() {
    {
        morvane::platform::CriticalSectionGuard const guard(sharing);
        if (nextSharer != this) {
            nextSharer->previousSharer = previousSharer;
            previousSharer->nextSharer = nextSharer;
            return;
        }
    }
    std::for_each(std::rbegin(pools), std::rend(pools), [this](auto field) { delete (this->*field); });
}
