// The pool of equally sized units under the size-class manager.
#pragma once

#include <atomic>
#include <cstdint>
#include <morvane/export.h>

namespace morvane {
class MemoryChain;
struct NodeGeometry;
} // namespace morvane

/// A pool of units of one size, carved out of large heap blocks called nodes.
///
/// A node is one block of `globalProcessMemory`, in address order: 16 bytes of head (`_MemoryNode`), then the parts (a
/// header, `_MemoryPart`, with its unit behind it), then a stack with the 16-bit indices of the free units. Nodes stand
/// in a chain, the oldest first. A unit comes from the first node of the chain that has a free one, the unit released
/// last before the others; a fresh node gives its units in address order. A node goes back to the heap as soon as its
/// last unit comes back, but for the first of the chain, which stays.
///
/// Use it for many short-lived blocks of one size; for mixed sizes take `_MemoryManager`.
/// Cost: 10 bytes a unit beside its own. `allocate` and `unallocate` take constant time, whatever the number of nodes;
/// a derived class that puts nodes into the middle of the chain, or sets its first, makes the next call walk the chain
/// once. Threads: `allocate`, `unallocate`, `unallocatePart` and `freeChain` may run on any thread at once; the rest
/// belongs to one thread. Ownership: the block owns its nodes; a unit is the caller's from `allocate` to `unallocate`
/// and dies with the block. Copies of a block that holds a node share its chain, each with counts of its own; whichever
/// goes last frees it. Errors: none is raised; a request that cannot be served gives null, and a pointer that no node
/// holds is ignored. A unit may be released only once.
class MORVANE_EXPORT _MemoryBlock {
public:
    /// The head of a node.
    struct _MemoryNode {
        /// The next node of the chain, null at its end.
        _MemoryNode * next;
        /// Free units of this node, which is the height of its stack.
        std::uint32_t freeCount;
    };

    /// The 8 bytes in front of every unit. In a pool of an odd unit size they are not aligned: read them by copy.
    struct _MemoryPart {
        /// The unit's place in its node, from 0.
        std::uint16_t index;
        /// The unit size of the block; 65,535 in front of a block that is too large for the pools.
        std::uint16_t unitSize;
        /// 0 in a pool; the size that was asked for in front of a block that is too large for the pools.
        std::uint32_t size;
    };

    /// Makes an empty pool: no node yet. `unitSize` in bytes; `unitCount` units in every node, 1 to 65,536, else
    /// nothing can be allocated.
    _MemoryBlock(std::uint16_t unitSize, std::uint32_t unitCount);
    /// Takes over the counts and sizes and shares the chain, if there is one.
    _MemoryBlock(_MemoryBlock const & other);
    /// Frees the chain with all units still in use, unless a copy still shares it.
    virtual ~_MemoryBlock();

    /// As the copy constructor; lets go of the chain that the block held.
    _MemoryBlock & operator=(_MemoryBlock const & other);

    /// A unit of `unitSize` bytes, aligned to 8 where `unitSize` is a multiple of 8, cleared when `zeroFill`; null when
    /// the heap refuses a node. A unit that is not cleared holds its last user's bytes, or zeros at its first use.
    void * allocate(bool zeroFill);
    /// Takes a unit back; a pointer that no node of this block holds is ignored.
    void unallocate(void * pointer);
    /// The same by the address of the unit's header.
    void unallocatePart(_MemoryPart * part);

    /// Says "unitSize:%d [allocCount:%d, unallocCount:%d]\r\n" on the debug channel. Takes no lock.
    void traceConsole() const;

    /// The 8-byte step between a header and its unit.
    static void * memoryPartToPointer(_MemoryPart * part);
    static _MemoryPart * pointerToMemoryPart(void * pointer);

    /// Plain stores. The sizes may change only while the chain is empty. `set_first` leaves the nodes that it puts
    /// aside to the caller, and parts the block from its copies.
    void set_allocationCount(std::uint32_t count);
    void set_first(_MemoryNode * node);
    void set_unallocationCount(std::uint32_t count);
    void set_unitCount(std::uint32_t count);
    void set_unitSize(std::uint16_t size);

protected:
    /// A zeroed node from `globalProcessMemory`, outside the chain, all its units free; null when it can't be had.
    _MemoryNode * createNode();
    /// Gives the node's block back to `globalProcessMemory`.
    void destroyNode(_MemoryNode * node);

    /// Pops a unit of the node and counts it; null when it has none free.
    void * createPointer(_MemoryNode * node, bool zeroFill);
    /// Pushes the part's unit back and counts it; ignored when all units of the node are free.
    void destroyPart(_MemoryPart * part, _MemoryNode * node);

    /// Writes the headers of all parts.
    void fillData(_MemoryNode * node);
    /// Makes all units free, index 0 on top.
    void fillStack(_MemoryNode * node);

    /// Frees all nodes, for the copies too; the counts stay.
    void freeChain();

    _MemoryNode * getFirstNode() const;
    _MemoryNode * getLastNode() const;
    /// The node in front; null for the first node, and for one outside the chain.
    _MemoryNode * getPreviousNode(_MemoryNode * node) const;
    _MemoryPart * getPart(_MemoryNode * node, std::uint32_t index) const;
    /// The stack of free indices: not aligned where the unit size is odd.
    std::uint16_t * getStack(_MemoryNode * node) const;

    /// Puts the node at the end of a chain that is not empty; nothing happens to an empty one.
    void insert(_MemoryNode * node);
    /// Puts `inserted` behind `node`; nothing happens if either is null.
    void insertAfter(_MemoryNode * node, _MemoryNode * inserted);
    /// Unlinks the node.
    void remove(_MemoryNode * node);

    /// True when no unit of the node is in use.
    bool isEmpty(_MemoryNode * node) const;
    /// True when the node has no free unit.
    bool isFull(_MemoryNode * node) const;

    /// The areas of a node, in bytes.
    std::uint32_t dataSize() const;
    std::uint32_t headSize() const;
    std::uint32_t nodeSize() const;
    std::uint32_t partSize() const;
    std::uint32_t stackSize() const;

private:
    std::uint32_t get_allocationCount() const;
    _MemoryNode * get_first() const;
    std::uint32_t get_unallocationCount() const;
    std::uint32_t get_unitCount() const;
    std::uint16_t get_unitSize() const;

    friend class _MemoryManager;

    morvane::NodeGeometry geometry() const;
    _MemoryNode * addNode();
    void dropNode(_MemoryNode * node);
    void * allocateUnit(bool zeroFill);
    /// `unallocatePart` where the header can be read for sure, wherever it lies.
    void unallocateHeaded(_MemoryPart * part);
    void takeBack(_MemoryPart * part, _MemoryNode * node);
    void * takeUnit(_MemoryNode * node, bool zeroFill);
    void giveUnitBack(_MemoryPart * part, _MemoryNode * node);

    static morvane::MemoryChain * shareChain(_MemoryBlock const & other);
    void leaveChain();

    std::atomic<std::uint32_t> allocationCount;
    std::atomic<std::uint32_t> unallocationCount;
    std::uint16_t unitSize;
    std::uint32_t unitCount;
    /// The first node, the lock `protect` and an index over the nodes: what copies share. Null when there was no memory
    /// for it.
    morvane::MemoryChain * chain;
};
