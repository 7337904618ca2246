#include <morvane/core/memory_manager.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <morvane/platform/critical_section_guard.h>
#include <new>

namespace {

constexpr std::uint32_t headerBytes = sizeof(_MemoryBlock::_MemoryPart);

/// In the unit size of the header of a block that came from the heap.
constexpr std::uint16_t heapMark = 65535;

constexpr std::uint32_t mostUnits = 65536;

/// Held while managers join or leave those that share their pools.
constinit _RTL_CRITICAL_SECTION sharing;

_MemoryBlock * createPool(std::uint16_t unitSize, std::uint32_t size) {
    return new (std::nothrow) _MemoryBlock(unitSize, std::clamp(size / unitSize, 1U, mostUnits));
}

void * allocateFrom(_MemoryBlock * pool, bool zeroFill) {
    return pool != nullptr ? pool->allocate(zeroFill) : nullptr;
}

void giveBackTo(_MemoryBlock * pool, _MemoryBlock::_MemoryPart * part) {
    if (pool != nullptr) {
        pool->unallocatePart(part);
    }
}

} // namespace

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
    if (size <= 16) {
        return allocateFrom(memoryBlock16, zeroFill);
    }
    if (size <= 32) {
        return allocateFrom(memoryBlock32, zeroFill);
    }
    if (size <= 64) {
        return allocateFrom(memoryBlock64, zeroFill);
    }
    if (size <= 128) {
        return allocateFrom(memoryBlock128, zeroFill);
    }
    if (size <= 256) {
        return allocateFrom(memoryBlock256, zeroFill);
    }
    if (size <= 512) {
        return allocateFrom(memoryBlock512, zeroFill);
    }
    if (size <= 1024) {
        return allocateFrom(memoryBlock1024, zeroFill);
    }
    if (size > std::numeric_limits<std::uint32_t>::max() - headerBytes) {
        return nullptr;
    }
    void * const block = memoryAllocator.heapAllocate(size + headerBytes, zeroFill);
    if (block == nullptr) {
        return nullptr;
    }
    return _MemoryBlock::memoryPartToPointer(new (block) _MemoryBlock::_MemoryPart{0, heapMark, size});
}

void _MemoryManager::fastUnallocate(void * pointer) {
    if (pointer == nullptr) {
        return;
    }
    _MemoryBlock::_MemoryPart * const part = _MemoryBlock::pointerToMemoryPart(pointer);
    switch (part->unitSize) {
    case 16:
        giveBackTo(memoryBlock16, part);
        break;
    case 32:
        giveBackTo(memoryBlock32, part);
        break;
    case 64:
        giveBackTo(memoryBlock64, part);
        break;
    case 128:
        giveBackTo(memoryBlock128, part);
        break;
    case 256:
        giveBackTo(memoryBlock256, part);
        break;
    case 512:
        giveBackTo(memoryBlock512, part);
        break;
    case 1024:
        giveBackTo(memoryBlock1024, part);
        break;
    case heapMark:
        memoryAllocator.heapUnallocate(part);
        break;
    default:
        break;
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
    for (_MemoryBlock const * pool : {memoryBlock16, memoryBlock32, memoryBlock64, memoryBlock128, memoryBlock256,
                                      memoryBlock512, memoryBlock1024}) {
        if (pool != nullptr) {
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
    memoryBlock16 = createPool(16, size);
    memoryBlock32 = createPool(32, size);
    memoryBlock64 = createPool(64, size);
    memoryBlock128 = createPool(128, size);
    memoryBlock256 = createPool(256, size);
    memoryBlock512 = createPool(512, size);
    memoryBlock1024 = createPool(1024, size);
}

void _MemoryManager::sharePools(_MemoryManager const & other) {
    memoryBlock16 = other.memoryBlock16;
    memoryBlock32 = other.memoryBlock32;
    memoryBlock64 = other.memoryBlock64;
    memoryBlock128 = other.memoryBlock128;
    memoryBlock256 = other.memoryBlock256;
    memoryBlock512 = other.memoryBlock512;
    memoryBlock1024 = other.memoryBlock1024;
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
    delete memoryBlock1024;
    delete memoryBlock512;
    delete memoryBlock256;
    delete memoryBlock128;
    delete memoryBlock64;
    delete memoryBlock32;
    delete memoryBlock16;
}
