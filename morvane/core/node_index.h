// Answers at once what a walk along the nodes of a pool would find.
#pragma once

#include <cstddef>
#include <cstdint>
#include <morvane/core/memory_block.h>

namespace morvane {

/// An index beside a chain of nodes: the first node with a free unit, the node at an address, the node in front of
/// another.
///
/// It is a hint and owns no node. Each node has a slot, in the order of the chain; slots are handed out upward, so that
/// a node at the end of the chain takes the next one, and a removed one leaves a gap. Nodes with a free unit have a bit
/// by slot, in a tree of words whose upper levels tell which lower words are not 0. A hash table leads from addresses
/// to slots: a node is entered under the granule in which it begins, and a granule is at least as long as a node, so
/// that two granules can hold the beginning of the node that holds an address. Cost: constant time for all but `build`,
/// which walks the chain; some 70 to 150 bytes a node.
class NodeIndex {
public:
    using Node = _MemoryBlock::_MemoryNode;
    using Slot = std::uint32_t;

    static constexpr Slot none = 0xFFFFFFFF;

    constexpr NodeIndex() = default;
    NodeIndex(NodeIndex const &) = delete;
    ~NodeIndex() { clear(); }

    NodeIndex & operator=(NodeIndex const &) = delete;

    /// False while there is nothing to ask: the chain must be walked.
    bool isBuilt() const { return storage != nullptr; }
    /// Builds it anew from the chain that begins with `first`; false, and not built, when there is no memory.
    bool build(Node * first, std::uint32_t bytesOfNode) noexcept;
    void clear() noexcept;

    /// Enters a node that stands at the end of the chain; false when all slots are taken.
    bool append(Node * node) noexcept;
    void remove(Slot slot) noexcept;

    /// The slot of a node; any address may be asked for.
    Slot slotOf(Node const * node) const noexcept {
        std::size_t place = homeOf(node);
        while (entries[place].node != node && entries[place].node != nullptr) {
            place = (place + 1) & entryMask;
        }
        return entries[place].node != nullptr ? entries[place].slot : none;
    }
    /// The slot of the node whose block holds the address.
    Slot find(void const * address) const noexcept;
    /// The first node of the chain with a free unit, as far as it was told.
    Slot firstOpen() const { return open; }
    bool isOpen(Slot slot) const { return (levels[0][slot / 64] >> (slot % 64) & 1) != 0; }
    /// Tells that the node has a free unit now, or none.
    void setOpen(Slot slot) noexcept;
    void setFull(Slot slot) noexcept;

    Node * nodeAt(Slot slot) const { return records[slot].node; }
    Slot previousOf(Slot slot) const { return records[slot].previous; }
    /// The last node of the chain.
    Slot lastSlot() const { return last; }

private:
    struct Record {
        Node * node;
        Slot previous;
        Slot next;
    };

    struct Entry {
        Node * node;
        Slot slot;
    };

    /// Levels of the tree that 2 to the 32 slots need.
    static constexpr std::size_t mostLevels = 6;

    std::size_t homeOf(std::uintptr_t granule) const {
        constexpr std::uint64_t golden = 0x9E3779B97F4A7C15;
        return static_cast<std::size_t>(granule * golden >> hashShift);
    }
    std::size_t homeOf(Node const * node) const {
        return homeOf(reinterpret_cast<std::uintptr_t>(node) >> granuleShift);
    }
    void enter(Node * node, Slot slot);
    void erase(Node const * node);
    Slot findFirstOpen() const;

    void * storage = nullptr;
    Record * records = nullptr;
    Entry * entries = nullptr;
    std::uint64_t * levels[mostLevels]{};
    std::size_t levelCount = 0;
    std::size_t entryMask = 0;
    int hashShift = 0;
    int granuleShift = 0;
    std::uint32_t nodeBytes = 0;
    Slot capacity = 0;
    Slot usedSlots = 0;
    Slot last = none;
    Slot open = none;
};

} // namespace morvane
