// The allocator for small blocks of mixed sizes.
#pragma once

#include <cstdint>
#include <morvane/core/memory.h>
#include <morvane/core/memory_block.h>
#include <morvane/export.h>

/// Seven pools for blocks of up to 16, 32, 64, 128, 256, 512 and 1,024 bytes, and the process heap for larger ones.
///
/// Use it, chiefly as `globalMemoryManager`, for many short-lived blocks of mixed sizes; the library itself does not
/// allocate from it. Cost: a block takes the size of its pool and 10 bytes more; both calls take constant time.
/// Threads: `fastAllocate`, `fastUnallocate`, `heapAllocate` and `heapUnallocate` may run on any thread at once; the
/// rest belongs to one thread. Ownership: a block is the caller's until it goes back by the route that it came from;
/// one from a pool dies with the manager. Copies share the pools; whichever goes last deletes them. Errors: none is
/// raised; a request that cannot be served gives null.
class MORVANE_EXPORT _MemoryManager {
public:
    /// Makes the pools, no node yet. `size`: bytes of data in one node; each pool then has `size` / unit size units in
    /// a node, at least 1 and at most 65,536.
    explicit _MemoryManager(std::uint32_t size = 262144);
    /// Copies the heap counts and shares the pools.
    _MemoryManager(_MemoryManager const & other);
    /// Deletes the pools, the largest units first, unless a copy still shares them.
    virtual ~_MemoryManager();

    /// As the copy constructor; lets go of the pools that the manager held.
    _MemoryManager & operator=(_MemoryManager const & other);

    /// Brings the manager to what the default constructor gives, letting go of its pools first.
    void default_ctor_closure();

    /// A block of `size` bytes from the smallest pool that fits, or above 1,024 bytes from the heap, cleared when
    /// `zeroFill`; null when it can't be had. From a pool as many bytes as its units have are cleared.
    void * fastAllocate(std::uint32_t size, bool zeroFill);
    /// Takes a block of `fastAllocate` back; null, and a pointer with no known unit size in front of it, is ignored.
    void fastUnallocate(void * pointer);

    /// The manager's own `_Memory`, whose counts the blocks above 1,024 bytes share.
    void * heapAllocate(std::uint32_t size, bool zeroFill);
    void heapUnallocate(void * pointer);
    /// Always 0.
    std::uint32_t heapFree() const;

    /// Says the line of each pool on the debug channel, the smallest units first.
    void traceConsole() const;

private:
    _Memory get_memoryAllocator() const;
    _MemoryBlock * get_memoryBlock16() const;
    _MemoryBlock * get_memoryBlock32() const;
    _MemoryBlock * get_memoryBlock64() const;
    _MemoryBlock * get_memoryBlock128() const;
    _MemoryBlock * get_memoryBlock256() const;
    _MemoryBlock * get_memoryBlock512() const;
    _MemoryBlock * get_memoryBlock1024() const;
    void set_memoryAllocator(_Memory memory);
    void set_memoryBlock16(_MemoryBlock * block);
    void set_memoryBlock32(_MemoryBlock * block);
    void set_memoryBlock64(_MemoryBlock * block);
    void set_memoryBlock128(_MemoryBlock * block);
    void set_memoryBlock256(_MemoryBlock * block);
    void set_memoryBlock512(_MemoryBlock * block);
    void set_memoryBlock1024(_MemoryBlock * block);

    void createPools(std::uint32_t size);
    void sharePools(_MemoryManager const & other);
    void leavePools();

    static constexpr std::uint32_t defaultNodeBytes = 262144;

    /// The pools by their place, from 0.
    static _MemoryBlock * _MemoryManager::*const pools[7];

    _Memory memoryAllocator;
    _MemoryBlock * memoryBlock16;
    _MemoryBlock * memoryBlock32;
    _MemoryBlock * memoryBlock64;
    _MemoryBlock * memoryBlock128;
    _MemoryBlock * memoryBlock256;
    _MemoryBlock * memoryBlock512;
    _MemoryBlock * memoryBlock1024;
    /// The ring of managers that share these pools.
    mutable _MemoryManager const * nextSharer;
    mutable _MemoryManager const * previousSharer;
};
